// An open map in a folder of a Wine prefix, and the steps of its replacement there.
#include "platform/prefix/prefix_map.h"

#include <cerrno>
#include <cstdio>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// The error of a file system, or of a kind of file, that has no hard links, or of a map that
// another file is mounted over or that has another project's quota.
bool lacks_hard_links(int error) {
  return error == EPERM || error == EOPNOTSUPP || error == ENOSYS || error == EMLINK ||
         error == EXDEV;
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
  return stat_of(file, status) && status.st_nlink > 0;
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
  // The file system does not know the flag. An empty placeholder is created first, which replaces
  // nothing, and is renamed over. It stays after a failure: another run may have replaced it.
  return open_at(folder, to, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600) &&
         uninterrupted([&] { return disk.rename(at, from.c_str(), to.c_str(), 0); }) == 0;
}

// What another map of the batch may have used up, and will have given back.
bool is_shortage(int error) {
  return error == ENOMEM || error == EMFILE || error == ENFILE || error == ENOSPC ||
         error == EDQUOT;
}

}  // namespace

PrefixMap::PrefixMap(std::string path_in, std::shared_ptr<const Descriptor> file_in,
                     Location location, const struct stat& status_in,
                     FolderNames::Known& known_names_in)
    : OpenMap(std::move(path_in), std::move(location.name), ""), file(std::move(file_in)),
      folder_path(std::move(location.folder)), status(status_in), state(file_state(status)),
      known_names(known_names_in) {}

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
  folder = open_path(file->disk(), folder_path + "/", O_RDONLY | O_DIRECTORY);
  if (!folder)
    return Failure{path, "open its folder", system_reason()};
  names = FolderNames::of(folder, known_names);
  if (names->append_only())
    return failure("nothing may be renamed in its folder");
  locked = file->disk().lock(file->get()) == 0;
  if (!locked && errno == EWOULDBLOCK)
    return failure(locked_by_another);
  if (file->disk().lease(file->get()) != 0 && errno == EAGAIN)
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

OpenMap::Content PrefixMap::content_of(std::shared_ptr<const Descriptor> file,
                                       const struct stat& status) {
  const auto read = [file = std::move(file), from = std::size_t{0}](char* into,
                                                                    std::size_t size) mutable {
    return read_all(*file, into, size, std::exchange(from, from + size));
  };
  return {static_cast<std::uint64_t>(status.st_size), read};
}

Result<std::optional<OpenMap::Content>> PrefixMap::open_to_read(const std::string& entry) {
  const auto opened = entry == name ? file
                                    : std::make_shared<const Descriptor>(open_at(
                                          folder, entry, O_RDONLY | O_NOFOLLOW | O_NONBLOCK));
  struct stat found;
  if (!*opened || !stat_of(*opened, found))
    return last_error();
  return S_ISREG(found.st_mode) ? std::optional(content_of(opened, found)) : std::nullopt;
}

int PrefixMap::descriptor_of(const std::string& entry) {
  if (entry == name)
    return file->get();
  if (const auto temporary = written.find(entry); temporary != written.end())
    return temporary->second.file.get();
  others.push_back(open_at(folder, entry, O_RDONLY | O_NOFOLLOW | O_NONBLOCK));
  return others.back().get();
}

// The file stays open for its lock. After a flush a failing close loses nothing.
Result<bool> PrefixMap::make_temporary(const std::string& entry, std::string_view content) {
  Written& made = written[entry];  // before the file, which missing memory would leave behind
  made.file = open_at(folder, entry, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
  if (!made.file && errno == EEXIST)
    return false;
  if (!made.file)
    return last_error();
  struct stat made_status;
  const bool ours = is_ours(made.file, made_status);
  if (!ours || !write(made, made_status, content)) {
    const int error = errno;
    remove(entry);
    written.erase(entry);
    errno = error;
    return ours ? Result<bool>(last_error()) : false;
  }
  names->changed(folder);
  return true;
}

bool PrefixMap::write(Written& made, const struct stat& made_status, std::string_view content) {
  made.mode = copy_owner(made.file, made_status, status);
  const int copied = folder.disk().copy_acl(file->get(), made.file.get());
  if (copied < 0)
    made.mode &= ~group_permissions;  // with a list the group bits are its mask
  if (copied > 0 && folder.disk().change_mode(made.file.get(), 0600) != 0)
    return false;
  return write_all(made.file, content);
}

void PrefixMap::remove(const std::string& entry) {
  folder.disk().remove(folder.get(), entry.c_str());
}

// A temporary file gets its permissions just before it is renamed: until then its owner can open
// it, and so remove it when it is stale. A file system without permissions is no reason to stop.
bool PrefixMap::set_permissions(const std::string& entry) {
  const auto temporary = written.find(entry);
  if (temporary == written.end())
    return true;
  const auto& [opened, mode] = temporary->second;
  return folder.disk().change_mode(opened.get(), mode) == 0 || errno == EPERM ||
         errno == EOPNOTSUPP;
}

// The kept hard link needs no care: on Linux a rename does not touch it.
Result<Done> PrefixMap::rename(const std::string& from, const std::string& to, const std::string&) {
  names->added(to);
  if (!set_permissions(from) || uninterrupted([&] {
                                  return folder.disk().rename(folder.get(), from.c_str(),
                                                              to.c_str(), 0);
                                }) != 0)
    return errno == EBUSY ? failure("another file is mounted over it") : last_error();
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
  if (uninterrupted([&] { return folder.disk().link(folder.get(), from.c_str(), to.c_str()); }) ==
      0)
    return true;
  if (lacks_hard_links(errno))
    return false;
  return last_error();
}
