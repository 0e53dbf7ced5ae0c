// Lists folders and finds names in them case-insensitively, as Windows does.
#pragma once

#include "platform/open_map.h"
#include "platform/prefix/descriptor.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <unordered_set>
#include <utility>

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
  // The names of folders that are in use, by device and inode, and those that were asked for last.
  struct Known {
    std::map<std::pair<std::uint64_t, std::uint64_t>, std::weak_ptr<FolderNames>> in_use;
    std::shared_ptr<FolderNames> last;
  };

  // The names of an open folder, from `known` if they are there. The folder is read if they are
  // not, or if it has been changed since the last call of `changed`.
  static std::shared_ptr<FolderNames> of(const Descriptor& folder, Known& known);

  explicit FolderNames(const Descriptor& folder);

  // Same result as `find_name`. The folder is read anew if there may be a name in other case.
  std::string find(const Descriptor& folder, const std::string& name) const;

  // The user of the names reports each name just before it makes it, and calls `changed` after its
  // changes to the folder: they need no new reading.
  void added(const std::string& name);
  void changed(const Descriptor& folder);

  // Whether the folder lets entries only be added.
  bool append_only() const { return is_append_only; }

  // The same for names of one folder that differ only in case.
  std::string folded(const std::string& name) const;

private:
  OpenMap::FileState state{};  // of the folder, when its names were all known
  bool complete = false;       // the names were read to the folder's end
  bool is_append_only = false;
  // Of the names in lower case. Most lookups miss, which these answer without a second reading.
  std::unordered_set<std::size_t> hashes;
};
