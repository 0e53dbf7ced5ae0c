// Reads folders, and finds names in them as Windows would: letter case ignored.
#pragma once

#include "platform/prefix/handle.h"
#include "platform/prefix/hashset.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_set>

// Calls `visit` with each name of a folder that was just opened for reading, "." and ".." left out,
// and its type (DT_REG, DT_DIR, ...). False, with errno set, when the folder cannot be read to its
// end.
using Visit = std::function<void(const char* name, unsigned char type)>;
bool for_each_name(const Handle& folder, const Visit& visit);

// The spelling of `name` in a folder: the exact one when it is there, else the first one that
// differs in letter case alone, else the empty text.
std::string find_name(const Handle& folder, const std::string& name);

// Remembers which names one folder holds, so that many questions about it cost one reading.
class FolderNames {
public:
  // Reads the folder, unless nothing has changed since it was last read. Call it before the rest.
  void refresh(const Handle& folder);

  // The same answer as `find_name`.
  std::string find(const Handle& folder, const std::string& name);

  // Tells of a name that the caller is about to make. The caller says when it is done, so that its
  // own changes are not taken for somebody else's.
  void added(const std::string& name);
  void changed(const Handle& folder);

private:
  struct Stamp {
    std::uint64_t device = 0, inode = 0;
    std::int64_t seconds = -1, nanoseconds = 0;  // of the folder's last change
    bool operator==(const Stamp&) const = default;
  };

  // What makes names that differ in letter case alone equal.
  struct Folded {
    std::size_t operator()(const std::string& name) const;
    bool operator()(const std::string& one, const std::string& other) const;
  };
  using Spellings = std::unordered_multiset<std::string, Folded, Folded>;

  static Stamp stamp_of(const Handle& folder);

  Stamp stamp;
  // Nearly always there is no such name in any letter case, which hashes tell in a tenth of the
  // memory that spellings take. These are read when a hash is known.
  HashSet hashes;
  std::optional<Spellings> spellings;
};
