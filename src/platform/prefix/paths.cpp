// Maps Windows paths to the POSIX paths of a Wine prefix, and back.
#include "platform/prefix/paths.h"

#include "platform/path_rules.h"
#include "platform/prefix/descriptor.h"
#include "platform/prefix/folder_names.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

// The path with all symlinks resolved; empty if it does not exist.
std::string resolve_symlinks(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                         &std::free);
  if (!real)
    throw_if_out_of_memory(errno);
  return real ? real.get() : "";
}

// Every symlink "x:" in the folder `dosdevices` is a drive.
std::map<char, std::string> linked_drives(const std::string& dosdevices) {
  std::map<char, std::string> roots;
  const auto visit = [&](const std::string& name, unsigned char) {
    if (name.size() == 2 && has_drive(name))
      roots[ascii_upper(name[0])] = resolve_symlinks(dosdevices + "/" + name);
  };
  for_each_name(open_path(system_disk(), dosdevices, O_RDONLY | O_DIRECTORY), visit);
  return roots;
}

std::map<char, std::string> drives_of(const std::string& machine) {
  std::error_code ignored;
  const std::string dosdevices = machine + "/dosdevices";
  if (std::filesystem::is_directory(dosdevices, ignored))
    return linked_drives(dosdevices);
  return {{'C', resolve_symlinks(machine + "/drive_c")}, {'Z', "/"}};
}

// For the root "/" itself, too, the result can be followed by "/" and a name.
std::string without_slash(std::string path) {
  while (path.ends_with('/'))
    path.pop_back();
  return path;
}

bool contains(const std::string& root, const std::string& path) {
  const std::string base = without_slash(root);
  return path.starts_with(base) && (path.size() == base.size() || path[base.size()] == '/');
}

bool exists_at(Disk& disk, const std::string& path) {
  struct stat ignored;
  if (disk.status(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, ignored) == 0)
    return true;
  return errno == ENAMETOOLONG && open_path(disk, path, O_PATH | O_NOFOLLOW);
}

Failure missing(const std::string& path) {
  return {path, "find it", "there is no such file or folder", Failure::Kind::missing};
}

// The failure to open a parent folder, by errno.
Failure path_failure(const std::string& path) {
  const bool no_such = errno == ENOENT || errno == ENOTDIR;
  return no_such ? missing(path) : Failure{path, "find it", system_reason()};
}

}  // namespace

Paths::Paths(const Machine& machine, Disk& disk_in)
    : disk(disk_in), current_folder(machine.current_folder), roots(drives_of(machine.folder)) {}

// The root of the drive that `path` names, else of the current drive.
Result<std::string> Paths::drive_root(const std::string& path) const {
  const std::string from = has_drive(path) ? path : windows_path(current_folder);
  const auto root = roots.find(ascii_upper(from[0]));
  if (root == roots.end())
    return Failure{path, "find it", "there is no such drive", Failure::Kind::missing};
  if (root->second.empty())
    return Failure{path, "find it", "the drive is not ready"};
  return without_slash(root->second);
}

Result<Paths::Parsed> Paths::parse(const std::string& path) const {
  if (path.empty())
    return missing(path);
  std::string_view rest = path;
  Parsed parsed;
  if (path.starts_with(unix_namespace)) {
    rest.remove_prefix(std::string_view(unix_namespace).size());
  } else if (has_drive(path) || is_separator(path[0])) {
    const auto root = drive_root(path);
    if (!root)
      return root.failure();
    parsed.root = *root;
    rest.remove_prefix(has_drive(path) ? 2 : 1);
  } else {
    parsed.components = split_names(current_folder, "/");
  }
  auto names = resolve(std::move(parsed.components), rest, path);
  if (!names)
    return names.failure();
  parsed.components = *std::move(names);
  return parsed;
}

Location Paths::unchecked_location(const Parsed& parsed) {
  Location exact{parsed.root, ""};
  for (const std::string& component : parsed.components) {
    if (!exact.name.empty())
      exact.folder.append("/").append(exact.name);
    exact.name = component;
  }
  return exact;
}

Result<Location> Paths::exact(const std::string& path) const {
  const auto parsed = parse(path);
  if (!parsed)
    return parsed.failure();
  return unchecked_location(*parsed);
}

Result<Location> Paths::find(const std::string& path) const {
  const auto parsed = parse(path);
  if (!parsed)
    return parsed.failure();
  if (Location exact = unchecked_location(*parsed);
      exact.name.empty() || exists_at(disk, exact.path()))
    return exact;
  Location found{parsed->root, ""};
  for (const std::string& component : parsed->components) {
    if (!found.name.empty())
      found.folder += "/" + found.name;
    const Descriptor folder = open_path(disk, found.folder + "/", O_PATH | O_DIRECTORY);
    if (!folder)
      return path_failure(path);
    const std::string spelled = find_name(folder, component);
    found.exists = !spelled.empty();
    found.name = found.exists ? spelled : component;
  }
  return found;
}

std::string Paths::windows_path(const std::string& path, char preferred) const {
  char letter = 0;
  std::string base;
  for (const auto& [drive, root] : roots) {
    const bool deeper = letter == 0 || without_slash(root).size() > base.size();
    const bool equal = without_slash(root).size() == base.size() && drive == ascii_upper(preferred);
    if (root.empty() || !contains(root, path) || (!deeper && !equal))
      continue;
    letter = drive;
    base = without_slash(root);
  }
  std::string names = path.substr(std::min(base.size() + 1, path.size()));
  std::replace(names.begin(), names.end(), '/', '\\');
  return (letter ? std::string{letter, ':', '\\'} : std::string(unix_namespace)) + names;
}

std::vector<std::string> Paths::drives() const {
  std::vector<std::string> letters;
  letters.reserve(roots.size());
  for (const auto& [letter, root] : roots)
    letters.push_back({letter, ':'});
  return letters;
}
