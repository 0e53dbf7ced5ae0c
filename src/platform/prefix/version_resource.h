// The product version that an executable file carries, read from the file itself: Linux has no
// facility of its own for version resources. The file is untrusted, and only the few hundred bytes
// that lead to the version are read.
#pragma once

#include "platform/system.h"

#include <istream>
#include <optional>

// The two product version fields (not the file version) of VS_FIXEDFILEINFO, the fixed part of the
// first version resource of a PE file (PE32 or PE32+). Nothing where the stream is no such file, or
// holds no version resource, or one that is damaged or cut off. The stream must be opened in binary
// mode and seekable; its position and state afterwards mean nothing.
std::optional<ProductVersion> read_product_version(std::istream& executable);
