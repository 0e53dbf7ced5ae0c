// Disks for tests, below the program's files.
#include "tests/support/disks.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>

namespace fs = std::filesystem;

namespace {

ino_t inode_of(int folder, const char* name) {
  struct stat status {};
  ::fstatat(folder, name, &status, AT_EMPTY_PATH | AT_SYMLINK_NOFOLLOW);
  return status.st_ino;
}

ino_t inode_of(int file) { return inode_of(file, ""); }

bool refuses(int error) {
  if (error)
    errno = error;
  return error != 0;
}

}  // namespace

bool WatchedDisk::fails() {
  const int error = before(++calls);
  halved = error == half;
  if (error > 0) {
    errno = error;
    ++disturbed;
  }
  return error > 0;
}

std::size_t WatchedDisk::part(std::size_t size) {
  if (!halved)
    return size;
  ++disturbed;
  return (size + 1) / 2;
}

int WatchedDisk::open(int folder, const char* name, int flags, unsigned mode) {
  return fails() ? -1 : Disk::open(folder, name, flags, mode);
}

// As on Linux, a file is closed even when its closing fails.
int WatchedDisk::close(int file) {
  const bool failed = fails();
  const int reason = errno;
  const int done = Disk::close(file);
  errno = reason;
  return failed ? -1 : done;
}

ssize_t WatchedDisk::read(int file, char* into, std::size_t size, off_t from) {
  return fails() ? -1 : Disk::read(file, into, part(size), from);
}

ssize_t WatchedDisk::write(int file, const char* from, std::size_t size) {
  return fails() ? -1 : Disk::write(file, from, part(size));
}

int WatchedDisk::flush(int) { return fails() ? -1 : 0; }

int WatchedDisk::lock(int file) { return fails() ? -1 : Disk::lock(file); }

int WatchedDisk::permit(int file, mode_t mode) { return fails() ? -1 : Disk::permit(file, mode); }

int WatchedDisk::status(int folder, const char* name, int flags, struct stat& status) {
  return fails() ? -1 : Disk::status(folder, name, flags, status);
}

ssize_t WatchedDisk::names(int folder, char* into, std::size_t size) {
  return fails() ? -1 : Disk::names(folder, into, size);
}

int WatchedDisk::rename(int folder, const char* from, const char* to, unsigned flags) {
  if (fails() || refuses(flags ? unknown.rename_no_replace : 0))
    return -1;
  return Disk::rename(folder, from, to, flags);
}

int WatchedDisk::link(int folder, const char* from, const char* to) {
  return fails() || refuses(unknown.link) ? -1 : Disk::link(folder, from, to);
}

int WatchedDisk::remove(int folder, const char* name) {
  return fails() ? -1 : Disk::remove(folder, name);
}

ModelDisk::ModelDisk(const fs::path& folder, Unknown unknown_in,
                     const std::function<bool(const std::string&)>& is_unflushed)
    : unknown(unknown_in) {
  for (const auto& [name, content] : tree(folder)) {
    struct stat status {};
    ::stat((folder / name).c_str(), &status);
    before[name] = status.st_ino;
    contents[status.st_ino] = is_unflushed(name) ? unflushed : content;
  }
}

void ModelDisk::add_cut(const std::function<bool(std::size_t)>& is_left) {
  Names names = before;
  for (std::size_t i = 0; i < changes.size(); ++i) {
    if (!is_left(i))
      continue;
    names.erase(changes[i].gone);
    if (!changes[i].made.empty())
      names[changes[i].made] = changes[i].inode;
  }
  Tree left;
  for (const auto& [name, inode] : names)
    left[name] = contents.at(inode);
  cuts.insert(std::move(left));
}

void ModelDisk::add_cuts() {
  add_cut([](std::size_t) { return true; });
  for (std::size_t lone = 0; lone < changes.size(); ++lone) {
    if (changes[lone].flushed)
      continue;
    add_cut([&](std::size_t i) { return i != lone; });
    add_cut([&](std::size_t i) { return i == lone || changes[i].flushed; });
  }
}

void ModelDisk::changed(Change change) {
  changes.push_back(std::move(change));
  add_cuts();
}

int ModelDisk::open(int folder, const char* name, int flags, unsigned mode) {
  const int file = Disk::open(folder, name, flags, mode);
  if (file < 0 || !(flags & O_CREAT))
    return file;
  contents[inode_of(file)] = unflushed;
  changed({"", name, inode_of(file), false});
  return file;
}

int ModelDisk::flush(int file) {
  const ino_t inode = inode_of(file);
  contents[inode] = read_file("/proc/self/fd/" + std::to_string(file));
  for (Change& change : changes)
    change.flushed |= change.inode == inode;
  add_cuts();
  return 0;
}

int ModelDisk::rename(int folder, const char* from, const char* to, unsigned flags) {
  const ino_t inode = inode_of(folder, from);
  if (refuses(flags ? unknown.rename_no_replace : 0) || Disk::rename(folder, from, to, flags) != 0)
    return -1;
  changed({from, to, inode, false});
  return 0;
}

int ModelDisk::link(int folder, const char* from, const char* to) {
  if (refuses(unknown.link) || Disk::link(folder, from, to) != 0)
    return -1;
  changed({"", to, inode_of(folder, from), false});
  return 0;
}

int ModelDisk::remove(int folder, const char* name) {
  const ino_t inode = inode_of(folder, name);
  if (Disk::remove(folder, name) != 0)
    return -1;
  changed({name, "", inode, false});
  return 0;
}
