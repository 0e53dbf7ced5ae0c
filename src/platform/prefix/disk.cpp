// The system calls that touch the disk.
#include "platform/prefix/disk.h"

#include "platform/parallel.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/file.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
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

int Disk::truncate(int file) { return ::ftruncate(file, 0); }

void Disk::flush(std::span<const int> files, std::span<int> errors) {
  run_in_parallel(files.size(), [&](std::size_t i) {
    errors[i] = uninterrupted([&] { return ::fsync(files[i]); }) == 0 ? 0 : errno;
  });
}

int Disk::lock(int file) { return ::flock(file, LOCK_EX | LOCK_NB); }

// Network file systems refuse with EAGAIN whenever their server grants nothing, whoever has the
// file open.
int Disk::lease(int file) {
  constexpr unsigned long networks[] = {NFS_SUPER_MAGIC, SMB_SUPER_MAGIC, CIFS_SUPER_MAGIC,
                                        SMB2_SUPER_MAGIC};
  if (::fcntl(file, F_SETLEASE, F_RDLCK) == 0)
    return 0;
  struct statfs status;
  if (errno == EAGAIN && ::fstatfs(file, &status) == 0 &&
      std::find(std::begin(networks), std::end(networks),
                static_cast<unsigned long>(status.f_type)) != std::end(networks))
    errno = EOPNOTSUPP;
  return -1;
}

int Disk::copy_acl(int from, int to) {
  constexpr char name[] = "system.posix_acl_access";
  const ssize_t size = ::fgetxattr(from, name, nullptr, 0);
  if (size >= 0) {
    std::vector<char> acl(static_cast<std::size_t>(size));
    return ::fgetxattr(from, name, acl.data(), acl.size()) == size &&
                   ::fsetxattr(to, name, acl.data(), acl.size(), 0) == 0
               ? 1
               : -1;
  }
  if (errno != ENODATA)
    return errno == EOPNOTSUPP ? 0 : -1;
  return ::fgetxattr(to, name, nullptr, 0) > 0 ? ::fremovexattr(to, name) : 0;
}

int Disk::change_mode(int file, mode_t mode) { return ::fchmod(file, mode); }

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
