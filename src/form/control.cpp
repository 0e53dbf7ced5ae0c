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
  screen.append(*this, more);
}

void DriveList::fill(std::vector<std::string> letters, std::string selected) {
  own_drives = std::move(letters);
  set_text(std::move(selected));
}

void DriveList::select(std::string drive) {
  if (drive == text())
    return;
  set_text(std::move(drive));
  if (changed)
    changed();
}

std::vector<FolderRow> DirectoryList::chain() const {
  std::vector<FolderRow> result;
  if (path().empty())
    return result;
  const auto add = [&](std::string name) {
    std::string whole = result.empty() ? name : joined(result.back().path, name);
    result.push_back({std::move(name), std::move(whole), result.size()});
  };
  std::size_t start = root_length(path());
  add(path().substr(0, start));
  while (start < path().size()) {
    const std::size_t end = std::min(path().find('\\', start), path().size());
    add(path().substr(start, end - start));
    start = end + 1;
  }
  return result;
}

std::vector<FolderRow> DirectoryList::rows() const {
  std::vector<FolderRow> result = chain();
  if (result.empty())
    return result;
  const FolderRow own = result.back();
  for (const std::string& name : own_subfolders)
    result.push_back({name, joined(own.path, name), own.depth + 1});
  return result;
}

Result<Done> DirectoryList::set_path(const std::string& folder) {
  const auto full = files.full_path(folder);
  if (!full)
    return full.failure();
  const auto entries = files.list(*full, "*");
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
  const auto entries = files.list(path(), own_pattern);
  own_names = entries ? names_of(*entries, false) : std::vector<std::string>();
  screen.refresh(*this);
}
