// How maps are replaced by their converted selves so that no instant is without a map. Many maps
// take each step together, so that the disk is waited for once a step and not once a map.
#pragma once

#include "platform/files.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// A file to be put in place as a whole, in the folder of its map.
struct NewFile {
  std::string name;
  std::string_view text;
};

// What a map is replaced by. The texts of the new files are written at once, and need to last no
// longer than the call that gets them. The new files get the map's owner and its permissions to
// read, write and execute, as far as the user may give them away; on Windows its attributes, while
// access rights come from the folder.
struct Replacement {
  std::string was;                  // the map's content, as it was read
  std::vector<NewFile> companions;  // put in place first, in this order
  std::string_view result;          // the map's new content
  std::string backup;  // the name under which the map stays as it was; empty: the map is
                       // not replaced, and only the companions are written
};

// Maps that are replaced together. For each of them the companions and the result are put in place,
// each whole and flushed before it gets its name. Just before a map is replaced it gets its backup
// name as well, which is flushed too, so that at no instant is there neither the map nor its
// backup, whole. A backup that is already there is kept: it is renamed to its own name with 2, 3,
// ... appended, the first free one. If it holds just what the map holds, the map's file takes its
// place instead, so that what another program still writes to the map is in the backup. Companions
// are found case-insensitively; a symlink is renamed or replaced like a file, never followed.
//
// A replacement fails when a folder has the name of a companion, when the map no longer holds what
// it `was`, and when another run has locked it. Then the map is as it was, and of its companions
// only those before the one that failed are in place; an older backup may have been renamed. A
// backup name that the map got is taken away again if that is safe. The other maps are replaced all
// the same.
class ReplacementBatch {
public:
  // `files_in`, which opens the maps, must outlive the object.
  explicit ReplacementBatch(Files& files_in);

  // What was not committed is not replaced.
  ~ReplacementBatch();

  bool empty() const { return maps.empty(); }

  // Whether it is time to commit: the batch holds 64 maps or 16 MB of text, or as many maps as may
  // be open at once.
  bool is_full() const;

  // Locks the map, writes what it is replaced by to temporary files, and keeps it until `commit`.
  // Also fails for a map that must wait until the batch is committed, and be read again then: one
  // of more than 16 MB, one that is the same file as another, or one that has the same companions.
  // After a failure nothing of the map is left in the batch.
  Result<Done> add(std::unique_ptr<OpenMap> map, Replacement replacement);

  // Replaces the maps and empties the batch. Returns what came of them, in the order of `add`.
  std::vector<Result<Done>> commit();

private:
  class Replacing;

  bool must_wait(const Replacing& replacing) const;
  void flush();

  Files& files;
  const std::size_t most;  // maps
  std::size_t bytes = 0;   // of the maps' content
  std::vector<std::unique_ptr<Replacing>> maps;
};
