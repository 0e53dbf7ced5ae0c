// File descriptors that close themselves, and basic operations on them.
#pragma once

#include "platform/open_map.h"
#include "platform/prefix/disk.h"
#include "platform/result.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

// An open file or folder, or none.
class Descriptor {
public:
  Descriptor() = default;
  Descriptor(Disk& disk_in, int opened) : owner(&disk_in), descriptor(opened) {}
  Descriptor(Descriptor&& other) noexcept
      : owner(other.owner), descriptor(std::exchange(other.descriptor, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(owner, other.owner);
    std::swap(descriptor, other.descriptor);
    return *this;
  }
  ~Descriptor();

  explicit operator bool() const { return descriptor >= 0; }
  int get() const { return descriptor; }
  Disk& disk() const { return *owner; }  // that the file was opened on

  // Closes the file now; false, with errno set, when that fails.
  bool close();

private:
  Disk* owner = nullptr;
  int descriptor = -1;
};

// Opens a POSIX path, which may be longer than PATH_MAX. Returns no descriptor, with errno
// set, on failure. `flags` are those of open(), to which O_CLOEXEC is added.
Descriptor open_path(Disk& disk, const std::string& path, int flags, unsigned mode = 0);

// Opens a name in an open folder.
Descriptor open_at(const Descriptor& folder, const std::string& name, int flags, unsigned mode = 0);

// Writes all of `text`; false, with errno set, on failure.
bool write_all(const Descriptor& file, std::string_view text);

// Reads up to `size` bytes from byte `from` on, fewer only at the file's end. Returns how many;
// nullopt, with errno set, on failure.
std::optional<std::size_t> read_all(const Descriptor& file, char* buffer, std::size_t size,
                                    std::size_t from = 0);

// The content of a regular file. Fails for any other, one that is larger than `most` bytes, and one
// that cannot be read.
Result<std::string> read_regular_file(const std::string& path, std::size_t most);

// The status of an open file; false, with errno set, on failure.
bool stat_of(const Descriptor& file, struct stat& status);

// The status of a name in an open folder, symlinks not followed; false, with errno set, on failure.
bool stat_at(const Descriptor& folder, const std::string& name, struct stat& status);

// The state of a file from its status, which was just read.
OpenMap::FileState file_state(const struct stat& status);

// Throws std::bad_alloc if `error`, a failed call's errno, says that memory ran out.
void throw_if_out_of_memory(int error);

// The system's own words for errno.
std::string system_reason();
