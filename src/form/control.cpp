// The controls of the form as plain values: a setter changes the value and tells the screen.
#include "form/control.h"

#include <algorithm>

namespace {

std::vector<std::string> namesof(const std::vector<Entry>& entries, bool folders) {
  std::vector<std::string> result;
  for (const Entry& entry : entries)
    if (entry.folder == folders)
      result.push_back(entry.name);
  return result;
}

std::string joined(const std::string& folder, const std::string& name) {
  return folder + (folder.ends_with('\\') ? "" : "\\") + name;
}

// How much of a full path names its root: a drive, or a folder that a server shares.
std::size_t rootlength(const std::string& path) {
  const int backslashes = path.starts_with("\\\\") ? 4 : 1;
  std::size_t length = 0;
  for (int i = 0; i < backslashes && length < path.size(); ++i)
    length = std::min(path.find('\\', length), path.size() - 1) + 1;
  return length;
}

}  // namespace

void Control::settext(std::string newtext) {
  owntext = std::move(newtext);
  screen.refresh(*this);
}

void Control::setenabled(bool on) {
  isenabled = on;
  screen.refresh(*this);
}

void Control::setvisible(bool on) {
  isvisible = on;
  screen.refresh(*this);
}

void Control::settooltip(std::string newtooltip) {
  owntooltip = std::move(newtooltip);
  screen.refresh(*this);
}

void Control::append(std::string_view more) {
  owntext += more;
  screen.appended(*this, more);
}

void DriveList::fill(std::vector<std::string> letters, std::string selected) {
  owndrives = std::move(letters);
  settext(std::move(selected));
}

void DriveList::select(std::string drive) {
  if (drive == text())
    return;
  settext(std::move(drive));
  if (changed)
    changed();
}

std::vector<FolderRow> DirectoryList::rows() const {
  std::vector<FolderRow> result;
  if (path().empty())
    return result;
  const auto add = [&](std::string name) {
    std::string whole = result.empty() ? name : joined(result.back().path, name);
    result.push_back({std::move(name), std::move(whole), result.size()});
  };
  std::size_t start = rootlength(path());
  add(path().substr(0, start));
  while (start < path().size()) {
    const std::size_t end = std::min(path().find('\\', start), path().size());
    add(path().substr(start, end - start));
    start = end + 1;
  }
  const FolderRow own = result.back();
  for (const std::string& name : ownsubfolders)
    result.push_back({name, joined(own.path, name), own.depth + 1});
  return result;
}

Result<Done> DirectoryList::setpath(const std::string& folder) {
  const auto full = files.fullpath(folder);
  if (!full)
    return full.failure();
  if (*full == path())
    return Done{};
  const auto entries = files.list(*full, "*");
  if (!entries)
    return entries.failure();
  ownsubfolders = namesof(*entries, true);
  settext(*full);
  if (changed)
    changed();
  return Done{};
}

void FileList::setpath(const std::string& folder) {
  owntext = folder;
  fill();
}

void FileList::setpattern(const std::string& newpattern) {
  ownpattern = newpattern;
  fill();
}

void FileList::fill() {
  const auto entries = files.list(path(), ownpattern);
  ownnames = entries ? namesof(*entries, false) : std::vector<std::string>();
  screen.refresh(*this);
}
