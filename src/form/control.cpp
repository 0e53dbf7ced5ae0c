// The controls of the form as plain values: a setter changes the value and refreshes the screen.
#include "form/control.h"

#include <algorithm>

namespace {

std::vector<std::string> names_of(const std::vector<Entry>& entries, bool folders) {
  std::vector<std::string> result;
  for (const Entry& entry : entries)
    if (entry.folder == folders)
      result.push_back(entry.name);
  return result;
}

std::string joined(const std::string& folder, const std::string& name) {
  return folder + (folder.ends_with('\\') ? "" : "\\") + name;
}

// The length of a full path's root: of "C:\" or, on a server, of "\\server\share\".
std::size_t root_length(const std::string& path) {
  const int backslashes = path.starts_with("\\\\") ? 4 : 1;
  std::size_t length = 0;
  for (int i = 0; i < backslashes && length < path.size(); ++i)
    length = std::min(path.find('\\', length), path.size() - 1) + 1;
  return length;
}

}  // namespace

void Control::append(std::string_view more) {
  own_text += more;
  window.screen.append(*this, more);
}

std::vector<FolderRow> DirectoryList::chain() const {
  std::vector<FolderRow> result;
  std::size_t start = 0;
  std::size_t end = root_length(path());
  while (start < path().size()) {
    result.push_back({path().substr(start, end - start), path().substr(0, end), result.size()});
    start = path().find_first_not_of('\\', end);
    end = path().find('\\', start);
  }
  return result;
}

std::vector<FolderRow> DirectoryList::rows() const {
  std::vector<FolderRow> result = chain();
  const std::size_t depth = result.size();
  for (const std::string& name : own_subfolders)
    result.push_back({name, joined(path(), name), depth});
  return result;
}

Result<Done> DirectoryList::set_path(const std::string& folder) {
  const auto full = window.files.full_path(folder);
  if (!full)
    return full.failure();
  const auto entries = window.files.list(*full, "*");
  if (!entries)
    return entries.failure();
  own_subfolders = names_of(*entries, true);
  const bool moves = *full != path();
  set_text(*full);
  if (moves && changed)
    changed();
  return Done{};
}

void FileList::set_path(const std::string& folder) {
  own_text = folder;
  fill();
}

void FileList::set_pattern(const std::string& new_pattern) {
  own_pattern = new_pattern;
  fill();
}

void FileList::fill() {
  const auto entries = window.files.list(text(), own_pattern);
  own_names = entries ? names_of(*entries, false) : std::vector<std::string>();
  window.screen.refresh(*this);
}
