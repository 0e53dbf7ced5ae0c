// Lists folders and finds names in them case-insensitively, as Windows does.
#pragma once

#include "platform/prefix/descriptor.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
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
  // The names of an open folder: `last`, which may be null, if they are of that folder, else new
  // ones. The folder is read if they are new or somebody else has changed it since this was called
  // last.
  static std::shared_ptr<FolderNames> of(const Descriptor& folder,
                                         std::shared_ptr<FolderNames> last);

  // Same result as `find_name`.
  std::string find(const Descriptor& folder, const std::string& name);

  // The same for names of one folder that differ only in case.
  std::string folded(const std::string& name) const;

  // Must be called before each change that the user of the names makes to the folder, so that the
  // folder is not read again for it; with the name if it makes one that may be looked for.
  void changing(const std::string& made = "");

private:
  struct FileState {
    std::uint64_t device = 0, inode = 0;
    std::int64_t seconds = -1, nanoseconds = 0;  // time of the folder's last change
    bool operator==(const FileState&) const = default;
  };

  static FileState state_of(const Descriptor& folder);

  void read(const Descriptor& folder, const FileState& now);

  FileState state;
  bool changed = false;  // by the user of the names, since `state` was taken
  // Most lookups miss. Hashes of the names in lower case answer a miss in a fraction of the memory;
  // the names are read only on a hit. Both are ordered, so that no choice of names is slow.
  std::set<std::size_t> hashes;
  std::optional<std::set<std::string>> spellings;  // each as "<lower case>\0<name>"
};
