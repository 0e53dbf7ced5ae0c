// A rule of the checker.
#pragma once

#include <string_view>

// An error damages maps or ends the program; a warning may be meant as it is.
enum class Severity { error, warning };

// A row of the table of docs/templates.md, which has a section of that name, too.
struct Rule {
  std::string_view name;
  Severity severity;
  bool in_maps = false;  // whether it finds something in maps
};
