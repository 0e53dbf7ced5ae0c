// Decides what a map's line is: which template line it begins with, and to which section that
// belongs; and whether a map is one of the game's own.
#pragma once

#include "convert/templates.h"
#include "platform/system.h"

#include <cstddef>
#include <string>
#include <string_view>

// The number of the last line of the template that `line` begins with; 0 when there is none, or
// only line 0.
std::size_t matchline(const OldTemplate& oldtemplate, std::string_view line);

// The section of a recognition line: the last one whose header stands before line `t`, else 0.
std::size_t sectionof(const OldTemplate& oldtemplate, std::size_t t);

// Whether the file name of `path` is `name`, letter case ignored.
bool samefilename(System& system, std::string_view path, std::string_view name);
