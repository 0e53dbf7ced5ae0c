// An open map in a folder of a Wine prefix, and the steps of its replacement there.
#include "platform/prefix/prefix_map.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int attempts = 100;  // to find a free name

// The error of a file system, or of a kind of file, that has no hard links.
bool lacks_hard_links(int error) {
  return error == EPERM || error == EOPNOTSUPP || error == ENOSYS || error == EMLINK;
}

constexpr mode_t permissions = 0777;  // without set-user-ID, set-group-ID and sticky bits
constexpr mode_t group_permissions = 0070;

// Copies owner and group from `like` to a file whose status is `own`. Returns the permissions that
// may be copied: those of the group only if the group matches, so that another group gains nothing.
mode_t copy_owner(const Descriptor& file, const struct stat& own, const struct stat& like) {
  const bool same = own.st_uid == like.st_uid && own.st_gid == like.st_gid;
  if (same || ::fchown(file.get(), like.st_uid, like.st_gid) == 0)
    return like.st_mode & permissions;
  const bool same_group = ::fchown(file.get(), static_cast<uid_t>(-1), like.st_gid) == 0;
  return like.st_mode & (same_group ? permissions : permissions & ~group_permissions);
}

// Whether a new file is this run's alone. Another run that clears stale temporaries may have taken
// it for one before it was locked, and has removed it or is about to.
bool is_ours(const Descriptor& file, struct stat& status) {
  if (file.disk().lock(file.get()) != 0 && errno == EWOULDBLOCK)
    return false;
  return describe(file, status) && status.st_nlink > 0;
}

// False, with errno set, on failure: EEXIST when `to` exists.
bool rename_at_no_replace(const Descriptor& folder, const std::string& from,
                          const std::string& to) {
  Disk& disk = folder.disk();
  const int at = folder.get();
  if (uninterrupted([&] { return disk.rename(at, from.c_str(), to.c_str(), RENAME_NOREPLACE); }) ==
      0)
    return true;
  if (errno != EINVAL && errno != ENOSYS)
    return false;
  // The file system does not know the flag. An empty file takes the name first, which replaces
  // nothing, and is renamed over.
  if (!open_at(folder, to, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600))
    return false;
  if (uninterrupted([&] { return disk.rename(at, from.c_str(), to.c_str(), 0); }) == 0)
    return true;
  const int error = errno;
  disk.remove(at, to.c_str());
  errno = error;
  return false;
}

// What another map of the batch may have used up, and will have given back.
bool is_shortage(int error) {
  return error == ENOMEM || error == EMFILE || error == ENFILE || error == ENOSPC ||
         error == EDQUOT;
}

}  // namespace

PrefixMap::PrefixMap(std::string path_in, ReadFile file_in, FolderNames::Known& known_names_in)
    : OpenMap(std::move(path_in), std::move(file_in.name), std::move(file_in.text)),
      file(std::move(file_in.descriptor)), folder_path(std::move(file_in.folder)),
      status(file_in.status), state(file_in.state), known_names(known_names_in) {}

PrefixMap::~PrefixMap() {
  if (names)
    names->changed(folder);
}

Failure PrefixMap::last_error() const {
  const auto kind = is_shortage(errno) ? Failure::Kind::shortage : Failure::Kind::other;
  return {path, "convert it", system_reason(), kind};
}

// Where the file system has no locks, `state_of` alone keeps two runs apart. Leases are only for a
// file's owner and root.
Result<OpenMap::FileState> PrefixMap::lock() {
  folder = open_path(file.disk(), folder_path + "/", O_RDONLY | O_DIRECTORY);
  if (!folder)
    return Failure{path, "open its folder", system_reason()};
  names = &FolderNames::of(folder, known_names);
  if (names->append_only())
    return failure("nothing may be renamed in its folder");
  locked = file.disk().lock(file.get()) == 0;
  if (!locked && errno == EWOULDBLOCK)
    return failure(locked_by_another);
  if (file.disk().lease(file.get()) != 0 && errno == EAGAIN)
    return failure(open_in_another);
  return state;
}

std::string PrefixMap::spelled(const std::string& entry) { return names->find(folder, entry); }

std::string PrefixMap::folded() const { return names->folded(name); }

Result<OpenMap::Kind> PrefixMap::kind_of(const std::string& entry) {
  struct stat found;
  if (!stat_at(folder, entry, found)) {
    if (errno == ENOENT)
      return Kind::nothing;
    return last_error();
  }
  if (S_ISDIR(found.st_mode))
    return Kind::folder;
  return S_ISREG(found.st_mode) ? Kind::file : Kind::other;
}

Result<OpenMap::FileState> PrefixMap::state_of(const std::string& entry) {
  struct stat found;
  if (!stat_at(folder, entry, found))
    return last_error();
  if (!S_ISREG(found.st_mode))
    return failure(not_ordinary);
  return file_state(found);
}

Result<bool> PrefixMap::holds(const std::string& entry, std::string_view content) {
  const Descriptor other =
      entry == name ? Descriptor() : open_at(folder, entry, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
  const Descriptor& opened = entry == name ? file : other;
  struct stat found;
  if (!opened || !describe(opened, found))
    return last_error();
  if (!S_ISREG(found.st_mode) || static_cast<std::size_t>(found.st_size) != content.size())
    return false;
  std::size_t from = 0;
  const auto read = [&](char* into, std::size_t size) {
    return read_all(opened, into, size, std::exchange(from, from + size));
  };
  const auto same = begins_with(read, content);
  if (!same)
    return last_error();
  return *same;
}

int PrefixMap::descriptor_of(const std::string& entry) {
  if (entry == name)
    return file.get();
  if (const auto* const temporary = find_written(entry))
    return temporary->file.get();
  others.push_back(open_at(folder, entry, O_RDONLY | O_NOFOLLOW | O_NONBLOCK));
  return others.back().get();
}

// Allocates beforehand what is needed once the file is there: if memory ran out then, the file
// would stay.
Result<std::string> PrefixMap::make_file(Written& made, struct stat& made_status) {
  for (int attempt = 0; attempt < attempts; ++attempt) {
    std::string free = temporary_name();
    made.name = free;
    made.file = open_at(folder, free, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
    if (!made.file && errno != EEXIST)
      break;
    if (made.file && is_ours(made.file, made_status))
      return free;
    if (made.file)
      remove(free);
  }
  return last_error();
}

// The file stays open for its lock. After a flush a failing close loses nothing.
Result<std::string> PrefixMap::write_temporary(std::string_view content) {
  Written& made = written.emplace_back();
  struct stat made_status;
  auto free = make_file(made, made_status);
  if (!free) {
    written.pop_back();
    return free;
  }
  made.mode = copy_owner(made.file, made_status, status);
  const int copied = folder.disk().copy_acl(file.get(), made.file.get());
  if (copied < 0)
    made.mode &= ~group_permissions;  // with a list the group bits are its mask
  if (copied > 0 && folder.disk().permit(made.file.get(), 0600) != 0)
    return remove_after_failure();
  if (!write_all(made.file, content))
    return remove_after_failure();
  names->changed(folder);
  return free;
}

// Removes the file that was made last.
Failure PrefixMap::remove_after_failure() {
  const int error = errno;
  remove(written.back().name);
  written.pop_back();
  errno = error;
  return last_error();
}

void PrefixMap::remove(const std::string& entry) {
  folder.disk().remove(folder.get(), entry.c_str());
}

// A temporary file gets its permissions just before it is renamed: until then its owner can open
// it, and so remove it when it is stale. A file system without permissions is no reason to stop.
bool PrefixMap::set_permissions(const std::string& entry) {
  const auto* const temporary = find_written(entry);
  return !temporary || folder.disk().permit(temporary->file.get(), temporary->mode) == 0 ||
         errno == EPERM || errno == EOPNOTSUPP;
}

const PrefixMap::Written* PrefixMap::find_written(const std::string& entry) const {
  const auto found = std::find_if(written.begin(), written.end(),
                                  [&](const Written& other) { return other.name == entry; });
  return found == written.end() ? nullptr : &*found;
}

// The kept hard link needs no care: on Linux a rename leaves it alone.
Result<Done> PrefixMap::rename(const std::string& from, const std::string& to, const std::string&) {
  names->added(to);
  if (!set_permissions(from) || uninterrupted([&] {
                                  return folder.disk().rename(folder.get(), from.c_str(),
                                                              to.c_str(), 0);
                                }) != 0)
    return last_error();
  return Done{};
}

Result<bool> PrefixMap::rename_no_replace(const std::string& from, const std::string& to) {
  names->added(to);
  if (set_permissions(from) && rename_at_no_replace(folder, from, to))
    return true;
  if (errno == EEXIST)
    return false;
  return last_error();
}

Result<bool> PrefixMap::link(const std::string& from, const std::string& to) {
  names->added(to);
  if (uninterrupted([&] { return folder.disk().link(folder.get(), from.c_str(), to.c_str()); }) ==
      0)
    return true;
  if (lacks_hard_links(errno))
    return false;
  return errno == EXDEV ? failure("another file is mounted over it") : last_error();
}

void remove_stale_temporary(const Descriptor& folder, const std::string& name) {
  const Descriptor file = open_at(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
  struct stat status;
  if (!file || !describe(file, status) || !S_ISREG(status.st_mode))
    return;
  if (folder.disk().lock(file.get()) == 0)
    folder.disk().remove(folder.get(), name.c_str());
}
