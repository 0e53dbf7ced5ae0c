// The system calls that touch the disk.
#include "platform/prefix/disk.h"

#include <cstdio>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

int Disk::open(int folder, const char* name, int flags, unsigned mode) {
  return ::openat(folder, name, flags, mode);
}

int Disk::close(int file) { return ::close(file); }

ssize_t Disk::read(int file, char* into, std::size_t size, off_t from) {
  return ::pread(file, into, size, from);
}

ssize_t Disk::write(int file, const char* from, std::size_t size) {
  return ::write(file, from, size);
}

int Disk::flush(int file) { return ::fsync(file); }

int Disk::lock(int file) { return ::flock(file, LOCK_EX | LOCK_NB); }

int Disk::permit(int file, mode_t mode) { return ::fchmod(file, mode); }

int Disk::status(int folder, const char* name, int flags, struct stat& status) {
  return ::fstatat(folder, name, &status, flags);
}

ssize_t Disk::names(int folder, char* into, std::size_t size) {
  return ::getdents64(folder, into, size);
}

int Disk::rename(int folder, const char* from, const char* to, unsigned flags) {
  return flags == 0 ? ::renameat(folder, from, folder, to)
                    : ::renameat2(folder, from, folder, to, flags);
}

int Disk::link(int folder, const char* from, const char* to) {
  return ::linkat(folder, from, folder, to, 0);
}

int Disk::remove(int folder, const char* name) { return ::unlinkat(folder, name, 0); }

Disk& system_disk() {
  static Disk disk;
  return disk;
}
