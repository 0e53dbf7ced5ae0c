// The controls of the form as plain values: a setter changes the value and tells the screen.
#include "form/control.h"

namespace {

std::vector<std::string> namesof(const std::vector<Entry>& entries, bool folders) {
  std::vector<std::string> result;
  for (const Entry& entry : entries)
    if (entry.folder == folders)
      result.push_back(entry.name);
  return result;
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
