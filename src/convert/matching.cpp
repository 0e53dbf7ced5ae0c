// Decides what a map's line is: which template line it begins with, and to which section that
// belongs; and whether a map is one of the game's own.
#include "convert/matching.h"

#include "form/text.h"

#include <algorithm>

std::size_t matchline(const OldTemplate& oldtemplate, std::string_view line) {
  return oldtemplate.index.find(line);
}

std::size_t sectionof(const OldTemplate& oldtemplate, std::size_t t) {
  const auto& heads = oldtemplate.heads;
  const auto above = std::lower_bound(heads.begin(), heads.end(), t);
  return above == heads.begin() ? 0 : static_cast<std::size_t>(above - heads.begin()) - 1;
}

bool samefilename(System& system, std::string_view path, std::string_view name) {
  return filename(system.lowercase(path)) == system.lowercase(name);
}
