// The system calls that touch the disk. All that `PrefixFiles` does with names and contents goes
// through this interface, so that tests can let any call fail, cut the power after it, or let
// another run in before it.
#pragma once

#include <cerrno>
#include <cstddef>
#include <span>

#include <sys/stat.h>
#include <sys/types.h>

// The system's own disk. Each function is the system call of the same kind: names are relative to
// an open folder, or to the current one for AT_FDCWD; on failure it returns -1 and sets errno,
// except where a function says otherwise.
class Disk {
public:
  virtual ~Disk() = default;

  virtual int open(int folder, const char* name, int flags, unsigned mode);
  virtual int close(int file);
  virtual ssize_t read(int file, char* into, std::size_t size, off_t from);
  virtual ssize_t write(int file, const char* from, std::size_t size);

  // Drops a file's content.
  virtual int truncate(int file);

  // Waits until the contents of all files are on the disk. Sets `errors` to the error number of
  // each, 0 for none.
  virtual void flush(std::span<const int> files, std::span<int> errors);

  // Locks a file exclusively until it is closed; EWOULDBLOCK when another process holds the lock.
  virtual int lock(int file);

  // Takes a read lease on a file until it is closed: EAGAIN when a program has it open for writing,
  // and one that opens it so later waits, which raises SIGIO. Other errors: there are no leases for
  // this file.
  virtual int lease(int file);

  // Copies the access control list of one file to another, or removes that one's if there is none.
  // Returns 1 when a list was copied, else 0.
  virtual int copy_acl(int from, int to);

  // Sets a file's permissions.
  virtual int change_mode(int file, mode_t mode);

  // The status of a name in a folder, or with AT_EMPTY_PATH and an empty name of an open file.
  virtual int status(int folder, const char* name, int flags, struct stat& status);

  // The next entries of an open folder as the system packs them (dirent64), in bytes; 0 at its end.
  virtual ssize_t names(int folder, char* into, std::size_t size);

  // `flags` are those of renameat2().
  virtual int rename(int folder, const char* from, const char* to, unsigned flags);
  virtual int link(int folder, const char* from, const char* to);
  virtual int remove(int folder, const char* name);
};

// Makes a system call again while a signal interrupts it.
template <class Call> auto uninterrupted(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR)
    result = call();
  return result;
}

// The disk that everything uses except in tests.
Disk& system_disk();
