// Letter case on Linux: names in a prefix are compared as Windows compares them, ignoring case.
#pragma once

#include <string>
#include <string_view>

// `text` with every Unicode letter lowered that has a lower-case form of its own. The text is
// UTF-8; bytes that are not are kept as they stand. A system without the C.UTF-8 locale knows ASCII
// alone.
std::string lowercase(std::string_view text);
