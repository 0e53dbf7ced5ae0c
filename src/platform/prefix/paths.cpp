// Maps Windows paths to the POSIX paths of a Wine prefix, and back.
#include "platform/prefix/paths.h"

#include "platform/path_rules.h"
#include "platform/prefix/descriptor.h"
#include "platform/prefix/folder_names.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

// The path with all symlinks resolved, without a final "/"; nullopt if it does not exist.
std::optional<std::string> resolve_symlinks(const std::string& path) {
  std::error_code failed;
  const auto real = std::filesystem::canonical(path, failed);
  throw_if_out_of_memory(failed.value());
  return failed ? std::nullopt : std::optional(real == "/" ? "" : real.string());
}

// Every symlink "x:" in the folder `dosdevices` is a drive.
Paths::Roots linked_drives(const std::string& dosdevices) {
  Paths::Roots roots;
  const auto visit = [&](const std::string& name, unsigned char) {
    if (name.size() == 2 && has_drive(name))
      roots[ascii_upper(name[0])] = resolve_symlinks(dosdevices + "/" + name);
  };
  for_each_name(open_path(system_disk(), dosdevices, O_RDONLY | O_DIRECTORY), visit);
  return roots;
}

Paths::Roots drives_of(const std::string& machine) {
  std::error_code ignored;
  const std::string dosdevices = machine + "/dosdevices";
  if (std::filesystem::is_directory(dosdevices, ignored))
    return linked_drives(dosdevices);
  return {{'C', resolve_symlinks(machine + "/drive_c")}, {'Z', ""}};
}

bool contains(const std::string& root, const std::string& path) {
  return path == root || path.starts_with(root + "/");
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
  if (const auto& place = root->second)
    return *place;
  return Failure{path, "find it", "the drive is not ready"};
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

Result<Location> Paths::find(const std::string& path, Spelling spelling) const {
  const auto parsed = parse(path);
  if (!parsed)
    return parsed.failure();
  Location found{parsed->root, ""};
  for (const std::string& component : parsed->components) {
    if (!found.name.empty())
      found.folder.append("/").append(found.name);
    found.name = component;
    if (spelling == Spelling::exact)
      continue;
    const Descriptor folder = open_path(disk, found.folder + "/", O_PATH | O_DIRECTORY);
    if (!folder)
      return path_failure(path);
    const std::string spelled = find_name(folder, component);
    found.exists = !spelled.empty();
    if (found.exists)
      found.name = spelled;
  }
  return found;
}

std::string Paths::windows_path(const std::string& path, char preferred) const {
  // By the length of its root with a "/", if the path is below it, else 0.
  const auto rank = [&](const Roots::value_type& drive) {
    const auto& [letter, root] = drive;
    const bool contains_it = root && contains(*root, path);
    return std::pair(contains_it ? root->size() + 1 : 0, letter == ascii_upper(preferred));
  };
  const auto deepest = std::ranges::max_element(roots, {}, rank);
  const std::size_t length = deepest == roots.end() ? 0 : rank(*deepest).first;
  std::string names = path.substr(std::min(std::max<std::size_t>(length, 1), path.size()));
  std::replace(names.begin(), names.end(), '/', '\\');
  return (length ? std::string{deepest->first, ':', '\\'} : std::string(unix_namespace)) + names;
}

std::vector<std::string> Paths::drives() const {
  std::vector<std::string> letters;
  letters.reserve(roots.size());
  for (const auto& [letter, root] : roots)
    letters.push_back({letter, ':'});
  return letters;
}
