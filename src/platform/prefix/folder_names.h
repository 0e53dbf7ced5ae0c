// Lists folders and finds names in them case-insensitively, as Windows does.
#pragma once

#include "platform/prefix/descriptor.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>

// Calls `visit` with each name in a folder and its type (DT_REG, DT_DIR, ...), except "." and "..".
// The folder must be newly opened for reading. False, with errno set, if it cannot be read to its
// end.
using Visit = std::function<void(const char* name, unsigned char type)>;
bool for_each_name(const Descriptor& folder, const Visit& visit);

// The spelling of `name` in a folder: `name` itself if it exists, else the first in byte order that
// differs only in case, else the empty text.
std::string find_name(const Descriptor& folder, const std::string& name);

// Remembers the names in one folder, so that many lookups read it once.
class FolderNames {
public:
  // Reads the folder if it has changed since the last call. Call this before the others.
  void refresh(const Descriptor& folder);

  // Same result as `find_name`.
  std::string find(const Descriptor& folder, const std::string& name);

  // The caller reports each name just before it creates it, and calls `changed` when it is done:
  // its own changes need no new reading.
  void added(const std::string& name);
  void changed(const Descriptor& folder);

private:
  struct FileState {
    std::uint64_t device = 0, inode = 0;
    std::int64_t seconds = -1, nanoseconds = 0;  // time of the folder's last change
    bool operator==(const FileState&) const = default;
  };

  static FileState state_of(const Descriptor& folder);

  FileState state;
  // Most lookups miss. Hashes of the names in lower case answer a miss in a fraction of the memory;
  // the names are read only on a hit. Both are ordered, so that no choice of names is slow.
  std::set<std::size_t> hashes;
  std::optional<std::set<std::string>> spellings;  // each as "<lower case>\0<name>"
};
