// Reads the product version from an executable file itself, since Linux has no API for version
// resources. The file is untrusted. Only the few hundred bytes on the way to the version are read.
#pragma once

#include "platform/system.h"

#include <istream>
#include <optional>

// The product version (not the file version) in VS_FIXEDFILEINFO of the version resource of a PE
// file (PE32 or PE32+): of those in several languages, the first. Nullopt for any other file, and
// if there is no version resource or a malformed or truncated one. The stream must be binary and
// seekable; its position and state afterwards are unspecified.
std::optional<ProductVersion> read_product_version(std::istream& executable);
