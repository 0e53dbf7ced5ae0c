// How a map is replaced by its converted self so that no instant is without the map: an open map,
// the steps of which a replacement is made, and the order in which they are taken.
#pragma once

#include "platform/result.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A map that was read and can be replaced. On Linux it stays open, so that a file
// which has taken its name since is detected. Windows renames no open file: there a file of the
// same content cannot be told from it.
//
// The functions are the steps of a replacement; each machine has its own. Names are those of
// entries of the map's folder. No step follows a symlink. A failure has the map's path and the
// system's reason.
class OpenMap {
public:
  enum class Kind { nothing, file, folder, other };

  // Tells a file from any other, and from itself once somebody has written to it.
  struct FileState {
    std::uint64_t device, file, size, time;
    bool settled;  // old enough that any later write changes the modification time

    bool same_file(const FileState& other) const {
      return device == other.device && file == other.file;
    }
    bool operator==(const FileState& other) const {
      return same_file(other) && size == other.size && time == other.time;
    }
  };

  OpenMap(std::string path_in, std::string name_in, std::string text_in)
      : path(std::move(path_in)), name(std::move(name_in)), text(std::move(text_in)) {}
  virtual ~OpenMap() = default;

  const std::string path;  // as the program names it
  const std::string name;  // as the folder spells it
  std::string text;        // what was read, for the caller to take

  // A new name for a temporary file: ".vora-map-updater-", a random decimal number and ".tmp". It
  // is hidden where a leading "." hides, and no search for maps finds it.
  static std::string temporary_name();
  static bool is_temporary(std::string_view name);

  // Takes an exclusive lock on the map until the object is gone, where the file system has locks;
  // fails when another run holds it. Where the system has leases it also fails when another program
  // has the map open for writing, and one that opens it later waits until the object is gone. The
  // state is that of the file that was read; when it is settled, it was taken before the reading.
  // Call it before the other steps.
  virtual Result<FileState> lock() = 0;

  // How `entry` is spelled in the folder, case-insensitively; empty when the name is free.
  virtual std::string spelled(const std::string& entry) = 0;

  // `nothing` is certain: an entry that cannot be examined is a failure.
  virtual Result<Kind> kind_of(const std::string& entry) = 0;

  // Fails when it is not an ordinary file. Always looks the name up; `holds` and `flush` may use
  // the open descriptor of the map.
  virtual Result<FileState> state_of(const std::string& entry) = 0;

  // Whether it is an ordinary file whose content is `content`.
  virtual Result<bool> holds(const std::string& entry, std::string_view content) = 0;

  // Flushes a file's content and its names to the disk.
  virtual Result<Done> flush(const std::string& entry) = 0;

  // Makes a hidden temporary file, writes the whole content and flushes it. Returns its name. Once
  // it is renamed it has the permissions of the map, on Windows its attributes.
  virtual Result<std::string> write_temporary(std::string_view content) = 0;

  virtual void remove(const std::string& entry) = 0;

  // Renames an entry and replaces `to`. `kept` is another hard link to the replaced file, if not
  // empty, and survives unchanged.
  virtual Result<Done> rename(const std::string& from, const std::string& to,
                              const std::string& kept) = 0;

  // Renames an entry; false when `to` exists.
  virtual Result<bool> rename_no_replace(const std::string& from, const std::string& to) = 0;

  // Makes `to` a hard link to the file `from`; false when the file system has no hard links. Fails
  // when `to` exists.
  virtual Result<bool> link(const std::string& from, const std::string& to) = 0;

protected:
  Failure failure(std::string reason) const { return {path, "convert it", std::move(reason)}; }

  static constexpr char locked_by_another[] = "another program has locked it";
  static constexpr char open_in_another[] = "another program has it open";
  static constexpr char not_ordinary[] = "it is not an ordinary file any more";

  // Reads the next `size` bytes, fewer only at a file's end; nullopt when that fails.
  using Read = std::function<std::optional<std::size_t>(char* into, std::size_t size)>;

  // Whether what `read` gives begins with `content`; nullopt when reading fails.
  static std::optional<bool> begins_with(const Read& read, std::string_view content);
};

// A file to be put in place as a whole, in the folder of its map.
struct NewFile {
  std::string name;
  std::string_view text;
};

// What a map is replaced by. The new files get the map's owner and its permissions to read, write
// and execute, as far as the user may give them away; on Windows its attributes, while access
// rights come from the folder.
struct Replacement {
  std::string_view was;             // the map's content, as it was read
  std::vector<NewFile> companions;  // put in place first, in this order
  std::string_view result;          // the map's new content
  std::string backup;  // the name under which the map stays as it was; empty: the map is
                       // not replaced, and only the companions are written
};

// Puts the companions and the result in place, each whole and flushed before it gets its name. Just
// before the map is replaced it gets its backup name as well, which is flushed too, so that at no
// instant is there neither the map nor its backup, whole. A backup that is already there is kept:
// it is renamed to its own name with 2, 3, ... appended, the first free one. If it holds just what
// the map holds, the map's file takes its place instead, so that what another program still writes
// to the map is in the backup. Companions are found case-insensitively; a symlink is renamed or
// replaced like a file, never followed.
//
// Fails when a folder has the name of a companion, when the map no longer holds what it `was`, and
// when another run has locked it. On failure the map is as it was, and of the companions only those
// before the one that failed are in place; an older backup may have been renamed. A backup name
// that the map got is taken away again if that is safe.
Result<Done> replace_map(OpenMap& map, const Replacement& replacement);
