// Decides what a map's line is: which template line it begins with, and to which section that
// belongs.
#include "convert/matching.h"

#include <algorithm>

std::size_t matchline(const OldTemplate& oldtemplate, std::string_view line) {
  return oldtemplate.index.find(line);
}

std::size_t sectionof(const OldTemplate& oldtemplate, std::size_t t) {
  const auto& heads = oldtemplate.heads;
  const auto above = std::lower_bound(heads.begin(), heads.end(), t);
  return above == heads.begin() ? 0 : static_cast<std::size_t>(above - heads.begin()) - 1;
}
