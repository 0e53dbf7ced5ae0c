// Locates the Wine prefix and the program's own folders.
#include "platform/prefix/machine.h"

#include <cstdlib>
#include <filesystem>
#include <optional>

#include <pwd.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

bool is_prefix(const fs::path& folder) {
  std::error_code ignored;
  return fs::exists(folder / "system.reg", ignored) &&
         (fs::exists(folder / "dosdevices", ignored) || fs::exists(folder / "drive_c", ignored));
}

// The innermost Wine prefix that contains `folder`, which may be the prefix itself.
std::optional<std::string> prefix_around(fs::path folder) {
  for (; !folder.empty(); folder = folder.parent_path()) {
    if (is_prefix(folder))
      return folder.string();
    if (folder == folder.root_path())
      break;
  }
  return std::nullopt;
}

std::string user_home() {
  if (const char* home = std::getenv("HOME"))
    return home;
  const passwd* user = getpwuid(getuid());
  return user ? user->pw_dir : "";
}

std::string find_prefix(const Machine& machine) {
  if (const char* prefix = std::getenv("WINEPREFIX"); prefix && *prefix)
    return (fs::path(machine.current_folder) / prefix).lexically_normal().string();
  if (auto prefix = prefix_around(machine.current_folder))
    return *prefix;
  if (auto prefix = prefix_around(machine.program_folder))
    return *prefix;
  return user_home() + "/.wine";
}

}  // namespace

Machine find_machine() {
  std::error_code ignored;
  Machine machine;
  machine.current_folder = fs::current_path(ignored).string();
  machine.program_folder = fs::read_symlink("/proc/self/exe", ignored).parent_path().string();
  machine.folder = find_prefix(machine);
  while (machine.folder.size() > 1 && machine.folder.ends_with('/'))
    machine.folder.pop_back();
  return machine;
}
