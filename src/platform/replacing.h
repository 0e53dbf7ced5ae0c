// How maps are replaced by their converted selves so that no instant is without a map. Many maps
// take each step together, so that the disk is waited for once a step and not once a map.
#pragma once

#include "platform/files.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// A file to be put in place as a whole, in the folder of its map.
struct NewFile {
  std::string name;
  std::string_view text;
};

// What a map is replaced by. The new files get the map's owner and its permissions to
// read, write and execute, as far as the user may give them away; on Windows its attributes, while
// access rights come from the folder.
struct Replacement {
  std::string was;                  // the map's content, as it was read
  std::vector<NewFile> companions;  // put in place first, in this order
  std::string_view result;          // the map's new content
  std::string backup;  // the name under which the map stays as it was; empty: the map is
                       // not replaced, and only the companions are written
};

class MapReplacement;

// Maps that are replaced together. For each of them the companions and the result are put in place,
// each whole and flushed before it gets its name. Just before a map is replaced it gets its backup
// name as well, which is flushed too, so that at no instant is there neither the map nor its
// backup, whole. A backup that is already there is kept: it is renamed to its own name with 2, 3,
// ... appended, the first free one. If it holds just what the map holds, or nothing, the new backup
// replaces it: whether the older one ever reached the disk, nobody knows. Companions are found
// case-insensitively; a symlink is renamed or replaced like a file, never followed.
//
// A replacement fails when a folder has the name of a companion, when the map no longer holds what
// it `was`, and when another run has locked it. Then the map is as it was, and of its companions
// only those before the one that failed are in place; an older backup may have been renamed. The
// new backup is removed if that is safe. The other maps are replaced all the same, unless a flush
// failed: from then on no map of that file system is replaced, since the system reports a failed
// write to one flush alone.
class ReplacementBatch {
public:
  // `files_in`, which opens the maps, must outlive the object.
  explicit ReplacementBatch(Files& files_in);

  // What was not committed is not replaced.
  ~ReplacementBatch();

  bool empty() const { return maps.empty(); }

  // Whether a map of `size` bytes may be added: a batch has at most 64 maps, 16 MB of text, and as
  // many maps as may be open at once. A larger map has a batch of its own.
  bool has_room(std::size_t size) const;

  // Locks the map, writes what it is replaced by to temporary files, and keeps it until `commit`.
  // Also fails for a map that must wait until the batch is committed, and be read again then: one
  // that is the same file as another, or has the same companions. After a failure nothing of the
  // map is left in the batch. The texts of `replacement` are used during the call alone.
  Result<Done> add(std::unique_ptr<OpenMap> map, Replacement replacement);

  // Replaces the maps and empties the batch. Returns what came of them, in the order of `add`. A
  // `shortage` may be one that the batch itself has caused.
  std::vector<Result<Done>> commit();

private:
  using Maps = std::vector<std::unique_ptr<MapReplacement>>;

  void flush(const Maps& flushed);
  void fail_unflushed(const Maps& flushed, const Unflushed& file);

  Files& files;
  const std::size_t most;                             // maps
  std::size_t bytes = 0;                              // of the maps' content
  std::map<std::uint64_t, std::string> failed_disks;  // devices, and what failed there
  Maps maps;
};
