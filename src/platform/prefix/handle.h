// File descriptors that close themselves, and the few operations on them that every user needs.
#pragma once

#include "platform/prefix/disk.h"
#include "platform/result.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

// An open file or folder, or none.
class Handle {
public:
  Handle() = default;
  Handle(Disk& disk_in, int opened) : owner(&disk_in), descriptor(opened) {}
  Handle(Handle&& other) noexcept
      : owner(other.owner), descriptor(std::exchange(other.descriptor, -1)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(owner, other.owner);
    std::swap(descriptor, other.descriptor);
    return *this;
  }
  ~Handle();

  explicit operator bool() const { return descriptor >= 0; }
  int get() const { return descriptor; }
  Disk& disk() const { return *owner; }  // that the file was opened on

  // Closes the file now; false, with errno set, when that fails.
  bool close();

private:
  Disk* owner = nullptr;
  int descriptor = -1;
};

// Opens a POSIX path, which may be longer than the system takes in one piece. No handle, with errno
// set, when that fails. `flags` are those of open(); the handle is closed in child processes.
Handle open_path(Disk& disk, const std::string& path, int flags, unsigned mode = 0);

// Opens a name in an open folder.
Handle open_at(const Handle& folder, const std::string& name, int flags, unsigned mode = 0);

// Writes all of `text`; false, with errno set, when that fails.
bool write_all(const Handle& file, std::string_view text);

// Reads up to `size` bytes from byte `from` on, less only at the file's end: how many, nothing with
// errno set when that fails.
std::optional<std::size_t> read_all(const Handle& file, char* buffer, std::size_t size,
                                    std::size_t from = 0);

// Describes an open file; false, with errno set, when that fails.
bool describe(const Handle& file, struct stat& status);

// Describes a name in an open folder, a link as a link; false, with errno set, when that fails.
bool stat_at(const Handle& folder, const std::string& name, struct stat& status);

// The system's own words for errno.
std::string system_reason();
