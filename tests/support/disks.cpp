// Disks for tests, below the program's files.
#include "tests/support/disks.h"

#include <cerrno>

#include <fcntl.h>

namespace fs = std::filesystem;

namespace {

ino_t inodeof(int file) {
  struct stat status {};
  ::fstat(file, &status);
  return status.st_ino;
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

ssize_t WatchedDisk::read(int file, char* into, std::size_t size) {
  return fails() ? -1 : Disk::read(file, into, part(size));
}

ssize_t WatchedDisk::write(int file, const char* from, std::size_t size) {
  return fails() ? -1 : Disk::write(file, from, part(size));
}

int WatchedDisk::flush(int) { return fails() ? -1 : 0; }

int WatchedDisk::lock(int file) { return fails() ? -1 : Disk::lock(file); }

int WatchedDisk::status(int folder, const char* name, int flags, struct stat& status) {
  return fails() ? -1 : Disk::status(folder, name, flags, status);
}

ssize_t WatchedDisk::names(int folder, char* into, std::size_t size) {
  return fails() ? -1 : Disk::names(folder, into, size);
}

int WatchedDisk::rename(int folder, const char* from, const char* to, unsigned flags) {
  return fails() ? -1 : Disk::rename(folder, from, to, flags);
}

int WatchedDisk::link(int folder, const char* from, const char* to) {
  if (fails())
    return -1;
  errno = EPERM;
  return links ? Disk::link(folder, from, to) : -1;
}

int WatchedDisk::remove(int folder, const char* name) {
  return fails() ? -1 : Disk::remove(folder, name);
}

// What is there before the run has long been flushed.
ModelDisk::ModelDisk(const fs::path& folder, bool knowslinks) : links(knowslinks) {
  for (const auto& [name, content] : tree(folder)) {
    struct stat status {};
    ::stat((folder / name).c_str(), &status);
    names[name] = status.st_ino;
    contents[status.st_ino] = content;
  }
}

void ModelDisk::changed() {
  cuts.emplace_back();
  for (const auto& [name, inode] : names)
    cuts.back()[name] = contents.contains(inode) ? contents[inode] : "";
}

int ModelDisk::open(int folder, const char* name, int flags, unsigned mode) {
  const int file = Disk::open(folder, name, flags, mode);
  if (file < 0 || !(flags & O_CREAT))
    return file;
  names[name] = inodeof(file);
  contents.erase(names[name]);
  changed();
  return file;
}

int ModelDisk::flush(int file) {
  contents[inodeof(file)] = readfile("/proc/self/fd/" + std::to_string(file));
  changed();
  return 0;
}

int ModelDisk::rename(int folder, const char* from, const char* to, unsigned flags) {
  const int done = Disk::rename(folder, from, to, flags);
  if (done != 0)
    return done;
  names[to] = names[from];
  names.erase(from);
  changed();
  return done;
}

int ModelDisk::link(int folder, const char* from, const char* to) {
  errno = EPERM;
  const int done = links ? Disk::link(folder, from, to) : -1;
  if (done != 0)
    return done;
  names[to] = names[from];
  changed();
  return done;
}

int ModelDisk::remove(int folder, const char* name) {
  const int done = Disk::remove(folder, name);
  if (done == 0 && names.erase(name) > 0)
    changed();
  return done;
}
