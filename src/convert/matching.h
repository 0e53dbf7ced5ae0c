// Decides what a map's line is: which template line it begins with, and to which section that
// belongs.
#pragma once

#include "convert/templates.h"

#include <cstddef>
#include <string_view>

// The number of the last line of the template that `line` begins with; 0 when there is none, or
// only line 0.
std::size_t matchline(const OldTemplate& oldtemplate, std::string_view line);

// The section of a recognition line: the last one whose header stands before line `t`, else 0.
std::size_t sectionof(const OldTemplate& oldtemplate, std::size_t t);
