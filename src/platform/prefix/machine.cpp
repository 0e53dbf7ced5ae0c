// Locates the Wine prefix and the program's own folders, and tells what is wrong with a folder that
// is no prefix.
#include "platform/prefix/machine.h"

#include "platform/prefix/descriptor.h"
#include "platform/prefix/launcher_prefixes.h"

#include <cstdlib>
#include <filesystem>
#include <utility>

#include <pwd.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

bool is_there(const fs::path& path) {
  std::error_code ignored;
  return fs::exists(path, ignored);
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

std::string suggest(const fs::path& folder) {
  const auto around = prefix_around(folder);
  if (is_prefix(folder / "pfx"))
    return "; did you mean " + (folder / "pfx").string() + "?";
  if (around && *around != folder)
    return "; did you mean " + *around + "?";
  return "";
}

// Why nothing was read of the registry; empty if something was.
std::string registry_problem(const fs::path& folder, const std::optional<Failure>& unread) {
  if (unread)
    return "its system.reg cannot be read: " + unread->reason;
  if (is_there(folder / "system.reg"))
    return "";
  std::error_code ignored;
  return fs::is_directory(folder, ignored) ? "it has no system.reg" : "there is no such folder";
}

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

// Of the user's prefixes, one with the game: the user's own, or else a launcher's.
void search_prefix(Machine& machine, const HasGame& has_game) {
  const std::string home = user_home();
  const std::string own = home + "/.wine";
  std::error_code missing;
  std::vector<std::string> found;
  const auto ask = [&](const std::string& prefix) {
    machine.folder = prefix;
    if (has_game(machine))
      found.push_back(prefix);
  };
  ask(own);
  for (const std::string& prefix : launcher_prefixes(home))
    if (!fs::equivalent(prefix, own, missing))
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

std::vector<fs::path> installations(const fs::path& program_folder) {
  std::vector<fs::path> folders = {(program_folder / PREFIXFROMPROGRAM).lexically_normal()};
  for (const char* const usual : {"/usr/local/", "/usr/"})
    if (folders.front() != usual)
      folders.emplace_back(usual);
  return folders;
}

bool is_prefix(const fs::path& folder) {
  return is_there(folder / "system.reg") &&
         (is_there(folder / "dosdevices") || is_there(folder / "drive_c"));
}

std::string explain_unregistered(const fs::path& folder, const std::optional<Failure>& unread,
                                 const std::string& subject) {
  const std::string problem = registry_problem(folder, unread);
  if (problem.empty())
    return subject + " is not registered in the Wine prefix " + folder.string() + suggest(folder);
  return "the Wine prefix " + folder.string() + " cannot be used: " + problem + suggest(folder);
}
