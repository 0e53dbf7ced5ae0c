// What all machines share.
#include "platform/files.h"

#include <algorithm>

std::string Files::first_listed_file(const std::string& folder) {
  const auto entries = list(folder, "*");
  if (!entries)
    return "";
  const auto file = std::find_if(entries->begin(), entries->end(),
                                 [](const Entry& entry) { return !entry.folder; });
  return file == entries->end() ? "" : file->name;
}
