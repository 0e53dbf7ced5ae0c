// The steps of a replacement, in a folder of a Windows machine that is kept in a folder.
#include "platform/prefix/prefix_map.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using Reason = MapFolder::Reason;

constexpr int attempts = 100;        // to find a free name
constexpr std::time_t coarsest = 2;  // seconds between the time stamps of some file systems

Reason last_error() { return {system_reason()}; }

// A file system, or a kind of file, that knows no second names.
bool lacks_hard_links(int error) {
  return error == EPERM || error == EOPNOTSUPP || error == ENOSYS || error == EMLINK;
}

constexpr mode_t permissions = 0777;  // a map has no business with the bits above
constexpr mode_t groups = 0070;

// Gives a file, which is described by `own`, the owner and the group of another one, and answers
// which permissions it may take over: only root may give files away, and another group must not get
// what was not meant for it.
mode_t copy_owner(const Handle& file, const struct stat& own, const struct stat& like) {
  const bool same = own.st_uid == like.st_uid && own.st_gid == like.st_gid;
  if (same || ::fchown(file.get(), like.st_uid, like.st_gid) == 0)
    return like.st_mode & permissions;
  const bool same_group = ::fchown(file.get(), static_cast<uid_t>(-1), like.st_gid) == 0;
  return like.st_mode & (same_group ? permissions : permissions & ~groups);
}

// Whether a new file is this run's alone. A run that clears up may have taken it for a leftover
// before it was locked, and has removed it or is about to.
bool is_ours(const Handle& file, struct stat& status) {
  if (file.disk().lock(file.get()) != 0 && errno == EWOULDBLOCK)
    return false;
  return describe(file, status) && status.st_nlink > 0;
}

// Renames to a name that must be free: EEXIST when it is not. False, with errno set, on failure.
bool rename_at_no_replace(const Handle& folder, const std::string& from, const std::string& to) {
  Disk& disk = folder.disk();
  const int at = folder.get();
  if (disk.rename(at, from.c_str(), to.c_str(), RENAME_NOREPLACE) == 0)
    return true;
  if (errno != EINVAL && errno != ENOSYS)
    return false;
  // The file system knows no such renaming.
  struct stat taken;
  if (stat_at(folder, to, taken)) {
    errno = EEXIST;
    return false;
  }
  return disk.rename(at, from.c_str(), to.c_str(), 0) == 0;
}

}  // namespace

std::string PrefixMapFolder::spelled(const std::string& name) { return names.find(folder, name); }

MapFolder::Stamp PrefixMapFolder::stamp(const struct stat& status) {
  const auto& time = status.st_mtim;
  return {status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size),
          static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000u +
              static_cast<std::uint64_t>(time.tv_nsec),
          time.tv_sec < std::time(nullptr) - coarsest};
}

// Where the file system has no locks, two runs at once are kept apart by `stamp_of` alone.
MapFolder::Answer<std::optional<MapFolder::Stamp>> PrefixMapFolder::lock() {
  if (folder.disk().lock(map.handle.get()) != 0 && errno == EWOULDBLOCK)
    return std::optional<Stamp>();
  return std::optional(map.stamp);
}

template <class Use> auto PrefixMapFolder::with(const std::string& name, Use use) const {
  return name == map_name ? use(map.handle)
                          : use(open_at(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK));
}

MapFolder::Answer<MapFolder::Kind> PrefixMapFolder::kind_of(const std::string& name) {
  struct stat status;
  if (!stat_at(folder, name, status)) {
    if (errno == ENOENT)
      return Kind::nothing;
    return last_error();
  }
  if (S_ISDIR(status.st_mode))
    return Kind::folder;
  return S_ISREG(status.st_mode) ? Kind::file : Kind::other;
}

MapFolder::Answer<MapFolder::Stamp> PrefixMapFolder::stamp_of(const std::string& name) {
  struct stat status;
  if (!stat_at(folder, name, status))
    return last_error();
  if (!S_ISREG(status.st_mode))
    return not_ordinary;
  return stamp(status);
}

MapFolder::Answer<bool> PrefixMapFolder::holds(const std::string& name, std::string_view text) {
  return with(name, [&](const Handle& file) -> Answer<bool> {
    struct stat status;
    if (!file || !describe(file, status))
      return last_error();
    if (!S_ISREG(status.st_mode) || static_cast<std::size_t>(status.st_size) != text.size())
      return false;
    std::size_t from = 0;
    const auto read = [&](char* into, std::size_t size) {
      return read_all(file, into, size, std::exchange(from, from + size));
    };
    const auto same = reads(read, text);
    if (!same)
      return last_error();
    return *same;
  });
}

MapFolder::Answer<Done> PrefixMapFolder::flush(const std::string& name) {
  return with(name, [&](const Handle& file) -> Answer<Done> {
    if (!file || folder.disk().flush(file.get()) != 0)
      return last_error();
    return Done{};
  });
}

MapFolder::Answer<std::string> PrefixMapFolder::make_file(Handle& file, struct stat& status) {
  for (int attempt = 0; attempt < attempts; ++attempt) {
    std::string free = temporary_name();
    file = open_at(folder, free, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
    if (!file && errno != EEXIST)
      break;
    if (file && is_ours(file, status))
      return free;
    if (file)
      remove(free);
  }
  return last_error();
}

MapFolder::Answer<std::string> PrefixMapFolder::write_temporary(std::string_view text) {
  Handle file;
  struct stat status;
  auto made = make_file(file, status);
  if (!made)
    return made;
  const mode_t mode = copy_owner(file, status, map.status);
  // It stays open for its lock: what was flushed no failing close can take back.
  if (write_all(file, text) && folder.disk().flush(file.get()) == 0) {
    written.push_back({*made, std::move(file), mode});
    return made;
  }
  Reason reason = last_error();
  remove(*made);
  return reason;
}

void PrefixMapFolder::remove(const std::string& name) {
  folder.disk().remove(folder.get(), name.c_str());
}

// A temporary file gets its permissions just before it takes its name: until then its owner can
// open it, and so clear up what a killed run has left. That a file system knows no permissions is
// no reason to stop.
bool PrefixMapFolder::permit(const std::string& name) {
  const auto file = std::find_if(written.begin(), written.end(),
                                 [&](const Written& other) { return other.name == name; });
  return file == written.end() || folder.disk().permit(file->file.get(), file->mode) == 0 ||
         errno == EPERM || errno == EOPNOTSUPP;
}

// A second name is unmoved by what becomes of the first.
MapFolder::Answer<Done> PrefixMapFolder::rename(const std::string& from, const std::string& to,
                                                const std::string&) {
  if (!permit(from) || folder.disk().rename(folder.get(), from.c_str(), to.c_str(), 0) != 0)
    return last_error();
  names.added(to);
  return Done{};
}

MapFolder::Answer<bool> PrefixMapFolder::rename_no_replace(const std::string& from,
                                                           const std::string& to) {
  names.added(to);
  if (permit(from) && rename_at_no_replace(folder, from, to))
    return true;
  if (errno == EEXIST)
    return false;
  return last_error();
}

MapFolder::Answer<bool> PrefixMapFolder::link(const std::string& from, const std::string& to) {
  names.added(to);
  if (folder.disk().link(folder.get(), from.c_str(), to.c_str()) == 0)
    return true;
  if (lacks_hard_links(errno))
    return false;
  return last_error();
}

void remove_stale_temporary(const Handle& folder, const std::string& name) {
  const Handle file = open_at(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
  struct stat status;
  if (!file || !describe(file, status) || !S_ISREG(status.st_mode))
    return;
  if (folder.disk().lock(file.get()) == 0)
    folder.disk().remove(folder.get(), name.c_str());
}
