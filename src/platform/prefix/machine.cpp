// Locates the Wine prefix and the program's own folders.
#include "platform/prefix/machine.h"

#include "platform/prefix/descriptor.h"
#include "platform/prefix/launcher_prefixes.h"
#include "platform/prefix/prefix_check.h"

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <utility>

#include <pwd.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::string user_home() {
  if (const char* home = std::getenv("HOME"); home && *home)
    return home;
  const passwd* user = getpwuid(getuid());
  return user ? user->pw_dir : "";
}

// Empty if there is none, as when it was removed.
std::string find_current_folder() {
  std::error_code failed;
  const fs::path folder = fs::current_path(failed);
  throw_if_out_of_memory(failed.value());
  return folder.string();
}

// The prefix that needs no search: the one that is named, or around the program.
std::optional<std::string> given_prefix(const Machine& machine) {
  if (const char* prefix = std::getenv("WINEPREFIX"); prefix && *prefix)
    return (fs::path(machine.current_folder) / prefix).lexically_normal().string();
  if (auto prefix = prefix_around(machine.current_folder))
    return prefix;
  return prefix_around(machine.program_folder);
}

bool same_folder(const std::string& one, const std::string& other) {
  std::error_code missing;
  return fs::equivalent(one, other, missing);
}

// Of the user's prefixes, one with the game: the user's own, or else a launcher's.
void search_prefix(Machine& machine, const HasGame& has_game) {
  const std::string home = user_home();
  const std::string own = home + "/.wine";
  std::vector<std::string> found;
  const auto ask = [&](const std::string& prefix) {
    machine.folder = prefix;
    if (has_game(machine))
      found.push_back(prefix);
  };
  ask(own);
  for (const std::string& prefix : launcher_prefixes(home))
    if (!same_folder(prefix, own))
      ask(prefix);
  machine.folder = found.empty() ? own : found.front();
  machine.chosen = found.size() > 1 || machine.folder != own;
  if (!found.empty())
    machine.others.assign(found.begin() + 1, found.end());
}

}  // namespace

Machine find_machine(const HasGame& has_game) {
  std::error_code ignored;
  Machine machine;
  machine.current_folder = find_current_folder();
  machine.program_folder = fs::read_symlink("/proc/self/exe", ignored).parent_path().string();
  if (auto prefix = given_prefix(machine))
    machine.folder = std::move(*prefix);
  else
    search_prefix(machine, has_game);
  while (machine.folder.size() > 1 && machine.folder.ends_with('/'))
    machine.folder.pop_back();
  return machine;
}
