// The files of a Wine prefix.
#include "platform/prefix/prefix_files.h"

#include "platform/letter_case.h"
#include "platform/path_rules.h"
#include "platform/prefix/prefix_map.h"

#include <algorithm>
#include <cerrno>
#include <optional>

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/vfs.h>

namespace {

Failure failure(const std::string& path, const char* action) {
  const bool missing = errno == ENOENT;
  const bool leased = errno == EWOULDBLOCK;
  return {path, action, leased ? "another program has it open" : system_reason(),
          missing ? Failure::Kind::missing : Failure::Kind::other};
}

// A map has itself open, its folder, up to two results, a copied backup, and the older and the new
// backup by their names; the rest of the program may need the others at the same time.
constexpr rlim_t descriptors_of_a_map = 7;
constexpr rlim_t other_descriptors = 32;

// Every map that these files have opened is of this machine.
PrefixMap& map_of(const Unflushed& file) { return static_cast<PrefixMap&>(file.map); }

// The kernel's own file systems: they hold no maps, and a walk through them may never end.
bool is_kernel_file_system(const Descriptor& folder) {
  struct statfs status;
  if (::fstatfs(folder.get(), &status) != 0)
    return false;
  constexpr unsigned long kinds[] = {
      PROC_SUPER_MAGIC, SYSFS_MAGIC,      CGROUP_SUPER_MAGIC, CGROUP2_SUPER_MAGIC, DEBUGFS_MAGIC,
      TRACEFS_MAGIC,    SECURITYFS_MAGIC, DEVPTS_SUPER_MAGIC, BPF_FS_MAGIC,        PSTOREFS_MAGIC,
      SELINUX_MAGIC,    EFIVARFS_MAGIC,   BINFMTFS_MAGIC,     AUTOFS_SUPER_MAGIC,  NSFS_MAGIC,
  };
  return std::ranges::count(kinds, static_cast<unsigned long>(status.f_type)) > 0;
}

// Whether a name in an open folder is a folder (true) or an ordinary file (false); nullopt for any
// other kind. A symlink counts as what it points to.
std::optional<bool> is_folder(const Descriptor& folder, const char* name) {
  struct stat status;
  if (!folder || folder.disk().status(folder.get(), name, 0, status) != 0)
    return std::nullopt;
  if (S_ISDIR(status.st_mode))
    return true;
  return S_ISREG(status.st_mode) ? std::optional(false) : std::nullopt;
}

// The entry for a name and type from readdir; nullopt when it does not belong in a list.
std::optional<Entry> make_entry(const Descriptor& folder, const char* name, unsigned char type,
                                std::string_view pattern) {
  const bool known = type == DT_DIR || type == DT_REG;
  const auto is_directory = known ? std::optional(type == DT_DIR) : is_folder(folder, name);
  if (!is_directory || (!*is_directory && !matches_pattern(name, pattern)) ||
      !is_allowed_name(name))
    return std::nullopt;
  struct stat status;
  const bool link = !known && (!stat_at(folder, name, status) || S_ISLNK(status.st_mode));
  return Entry{name, *is_directory, link};
}

}  // namespace

Result<PrefixFiles::Opened> PrefixFiles::open(const std::string& path, int flags,
                                              const char* action) const {
  if (auto exact = paths.find(path, Paths::Spelling::exact))
    if (Descriptor descriptor = open_path(disk, exact->path(), flags))
      return Opened{std::move(descriptor), *std::move(exact)};
  auto location = paths.find(path);
  if (!location)
    return location.failure();
  Descriptor descriptor = open_path(disk, location->path(), flags);
  if (!descriptor)
    return failure(path, action);
  return Opened{std::move(descriptor), *std::move(location)};
}

Result<PrefixFiles::Opened> PrefixFiles::open_folder(const std::string& folder) const {
  return open(folder, O_RDONLY | O_DIRECTORY, "open the folder");
}

Result<Files::Found> PrefixFiles::find_entry(const std::string& path) {
  const auto location = paths.find(path);
  if (!location && !location.failure().missing())
    return location.failure();
  if (!location || !location->exists || hidden_names.contain(location->folder, location->name))
    return Found{};
  errno = 0;
  const Descriptor folder = open_path(disk, location->folder + "/", O_PATH | O_DIRECTORY);
  const auto kind = is_folder(folder, location->name.c_str());
  if (!kind && errno != 0 && errno != ENOENT)
    return failure(path, "find it");
  return kind ? Found{location->name, *kind} : Found{};
}

Result<Files::Listing> PrefixFiles::read_folder(const std::string& folder,
                                                std::string_view pattern) {
  const auto opened = open_folder(folder);
  if (!opened)
    return opened.failure();
  const Descriptor& descriptor = opened->descriptor;
  if (is_kernel_file_system(descriptor))
    return Failure{folder, "list the folder", "it is the system's own"};
  const std::string path = opened->location.path();
  Listing listing;
  const bool complete = for_each_name(descriptor, [&](const char* name, unsigned char type) {
    if (OpenMap::is_temporary(name))
      listing.temporaries.emplace_back(name);
    if (auto entry = make_entry(descriptor, name, type, pattern);
        entry && !hidden_names.contain(path, name))
      listing.entries.push_back(*std::move(entry));
  });
  if (!complete)
    return failure(folder, "list the folder");
  sort_entries(listing.entries, lowercase);
  return listing;
}

void PrefixFiles::remove_stale_temporary(const std::string& folder, const std::string& name) {
  const auto opened = open_folder(folder);
  if (!opened)
    return;
  const Descriptor& descriptor = opened->descriptor;
  const Descriptor file = open_at(descriptor, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
  struct stat status;
  if (file && stat_of(file, status) && S_ISREG(status.st_mode) && disk.lock(file.get()) == 0)
    disk.remove(descriptor.get(), name.c_str());
}

Result<std::string> PrefixFiles::full_path(const std::string& folder) {
  const auto opened = open_folder(folder);
  if (!opened)
    return opened.failure();
  return paths.windows_path(opened->location.path(), folder[0]);
}

Result<Files::OpenedFile> PrefixFiles::open_file(const std::string& path) {
  auto opened = open(path, O_RDONLY | O_NONBLOCK, "read it");
  if (!opened)
    return opened.failure();
  const auto file = std::make_shared<const Descriptor>(std::move(opened->descriptor));
  struct stat status;
  if (!stat_of(*file, status))
    return failure(path, "read it");
  Location& location = opened->location;
  if (!S_ISREG(status.st_mode) || hidden_names.contain(location.folder, location.name))
    return OpenedFile{};
  return OpenedFile{
      std::make_unique<PrefixMap>(path, file, std::move(location), status, known_names),
      PrefixMap::content_of(file, status)};
}

std::size_t PrefixFiles::most_open_maps() {
  struct rlimit limit;
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur <= other_descriptors)
    return 1;
  return std::max<std::size_t>(1, (limit.rlim_cur - other_descriptors) / descriptors_of_a_map);
}

void PrefixFiles::flush(std::span<Unflushed> files) {
  std::vector<int> descriptors;
  for (Unflushed& file : files) {
    descriptors.push_back(map_of(file).descriptor_of(file.entry));
    if (descriptors.back() < 0)
      file.flushed = map_of(file).last_error();
  }
  std::vector<int> errors(files.size());
  disk.flush(descriptors, errors);
  for (std::size_t i = 0; i < files.size(); ++i) {
    errno = errors[i];
    if (errno != 0 && files[i].flushed)
      files[i].flushed =
          Failure{files[i].map.path, "flush it", system_reason(), Failure::Kind::unconfirmed};
  }
}

Result<bool> PrefixFiles::write_text(const std::string& path, std::string_view text,
                                     Writing writing) {
  const auto location = paths.find(path);
  if (!location)
    return location.failure();
  int flags = O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK;
  if (writing != Writing::anew)
    flags |= writing == Writing::at_end ? O_APPEND : O_EXCL;
  Descriptor file = open_path(disk, location->path(), flags, 0666);
  struct stat status;
  if (!file || !stat_of(file, status))
    return failure(path, "write it");
  if (status.st_nlink > 1)
    return false;
  const bool truncated = writing != Writing::anew || disk.truncate(file.get()) == 0;
  if (!truncated || !write_all(file, text) || !file.close())
    return failure(path, "write it");
  return true;
}

Result<Done> PrefixFiles::remove_text(const std::string& path) {
  const auto location = paths.find(path);
  if (!location)
    return location.failure();
  if (disk.remove(AT_FDCWD, location->path().c_str()) != 0)
    return failure(path, "write it");
  return Done{};
}
