// The maps that a search has found.
#include "form/found_list.h"

#include <algorithm>
#include <iterator>

void FoundList::add(const std::string& folder, std::string_view name) {
  if (folders.empty() || folders.back().path != folder)
    folders.push_back({folder, ends.size()});
  names += name;
  ends.push_back(names.size());
}

std::string FoundList::operator[](std::size_t index) const {
  if (index >= ends.size())
    return "";
  const auto above = std::upper_bound(
      folders.begin(), folders.end(), index,
      [](std::size_t number, const Folder& folder) { return number < folder.first; });
  const std::size_t begin = index == 0 ? 0 : ends[index - 1];
  return std::prev(above)->path + "\\" + names.substr(begin, ends[index] - begin);
}
