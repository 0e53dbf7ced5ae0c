// Decides what a map's line is: which template line it begins with, and to which section that
// belongs; and whether a map is one of the game's own.
#include "convert/matching.h"

#include "form/text.h"

std::size_t matchline(const OldTemplate& oldtemplate, std::string_view line) {
  return oldtemplate.index.find(line);
}

std::size_t sectionof(const OldTemplate& oldtemplate, std::size_t t) {
  return oldtemplate.sections[t];
}

bool samefilename(System& system, std::string_view path, std::string_view name) {
  return filename(system.lowercase(path)) == system.lowercase(name);
}
