// Where a Windows machine kept in a folder is, and where in it the program runs.
#include "platform/prefix/machine.h"

#include <cstdlib>
#include <filesystem>
#include <optional>

#include <pwd.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

bool isprefix(const fs::path& folder) {
  std::error_code ignored;
  return fs::exists(folder / "system.reg", ignored) &&
         (fs::exists(folder / "dosdevices", ignored) || fs::exists(folder / "drive_c", ignored));
}

// The nearest prefix that holds `folder`.
std::optional<std::string> prefixabove(fs::path folder) {
  for (; !folder.empty(); folder = folder.parent_path()) {
    if (isprefix(folder))
      return folder.string();
    if (folder == folder.root_path())
      break;
  }
  return std::nullopt;
}

std::string homefolder() {
  if (const char* home = std::getenv("HOME"))
    return home;
  const passwd* user = getpwuid(getuid());
  return user ? user->pw_dir : "";
}

std::string findprefix(const Machine& machine) {
  if (const char* prefix = std::getenv("WINEPREFIX"); prefix && *prefix)
    return (fs::path(machine.currentfolder) / prefix).lexically_normal().string();
  if (auto prefix = prefixabove(machine.currentfolder))
    return *prefix;
  if (auto prefix = prefixabove(machine.programfolder))
    return *prefix;
  return homefolder() + "/.wine";
}

}  // namespace

Machine findmachine() {
  std::error_code ignored;
  Machine machine;
  machine.currentfolder = fs::current_path(ignored).string();
  machine.programfolder = fs::read_symlink("/proc/self/exe", ignored).parent_path().string();
  machine.folder = findprefix(machine);
  while (machine.folder.size() > 1 && machine.folder.ends_with('/'))
    machine.folder.pop_back();
  return machine;
}
