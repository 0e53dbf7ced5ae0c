// Rules for names that every machine shares.
#pragma once

#include <string_view>

// Whether a file's name matches `pattern`, letter case ignored. A pattern is "*" followed by the
// end that the name must have ("*.galaxy"), "*" alone matches every name.
bool matchespattern(std::string_view name, std::string_view pattern);

// Whether Windows would allow `name` as the name of a file or folder.
bool allowedname(std::string_view name);
