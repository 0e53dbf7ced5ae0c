// A map that was read, and the steps of which its replacement is made.
#pragma once

#include "platform/result.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

// A map that was read and can be replaced. On Linux its file stays open, which shows when another
// file has taken its name since. Windows does not rename an open file, so there another file of the
// same content goes unnoticed.
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

  // A file that is open to be read from its start.
  struct Content {
    std::uint64_t size = 0;
    // Reads the next bytes, fewer only at the file's end; nullopt, with `last_error`, on failure.
    std::function<std::optional<std::size_t>(char* into, std::size_t size)> read{};
  };

  OpenMap(std::string path_in, std::string name_in, std::string text_in)
      : path(std::move(path_in)), name(std::move(name_in)), text(std::move(text_in)) {}
  virtual ~OpenMap() = default;

  const std::string path;  // as the program names it
  const std::string name;  // as the folder spells it
  std::string text;        // what was read, for the caller to take
  bool locked = false;     // no other run touches the map until the object is gone; see `lock`

  // A new name for a temporary file: ".vora-map-updater-", a random decimal number and ".tmp". It
  // is hidden where a leading "." hides, and no search for maps finds it.
  static std::string temporary_name();
  static bool is_temporary(std::string_view name);

  // Takes an exclusive lock on the map until the object is gone, where the file system has locks;
  // fails when another run holds it. Where the system has leases it also fails when another program
  // has the map open for writing, and one that opens it later waits until the object is gone. The
  // state is that of the file that was read; when it is settled, it was taken before the reading.
  // Call it before the other steps. Sets `locked`.
  virtual Result<FileState> lock() = 0;

  // How `entry` is spelled in the folder, case-insensitively; empty when the name is free.
  virtual std::string spelled(const std::string& entry) = 0;

  // The same for two maps of one folder whose names differ only in case: their companions have the
  // same names. Only for a locked map.
  virtual std::string folded() const = 0;

  // `nothing` is certain: an entry that cannot be examined is a failure.
  virtual Result<Kind> kind_of(const std::string& entry) = 0;

  // Fails when it is not an ordinary file. Always looks the name up; `holds` may use the
  // open descriptor of the map.
  virtual Result<FileState> state_of(const std::string& entry) = 0;

  // Whether it is an ordinary file whose content is `content`.
  Result<bool> holds(const std::string& entry, std::string_view content);

  // Makes a hidden temporary file and writes the whole content. Returns its name. Once it is
  // renamed it has the permissions of the map, on Windows its attributes.
  Result<std::string> write_temporary(std::string_view content);

  virtual void remove(const std::string& entry) = 0;

  // Renames an entry and replaces `to`. `kept` is another hard link to the replaced file, if not
  // empty, and survives unchanged.
  virtual Result<Done> rename(const std::string& from, const std::string& to,
                              const std::string& kept) = 0;

  // Renames an entry; false when `to` exists. Where the file system knows no such
  // rename, an empty file takes the name first and is replaced.
  virtual Result<bool> rename_no_replace(const std::string& from, const std::string& to) = 0;

  // Makes `to` a hard link to the file `from`; false when the file system has no hard links. Fails
  // when `to` exists.
  virtual Result<bool> link(const std::string& from, const std::string& to) = 0;

  // The failure of the system call that was made last.
  virtual Failure last_error() const = 0;

protected:
  Failure failure(std::string reason) const { return {path, "convert it", std::move(reason)}; }

  static constexpr char locked_by_another[] = "another program has locked it";
  static constexpr char open_in_another[] = "another program has it open";
  static constexpr char not_ordinary[] = "it is not an ordinary file any more";

  // An entry's content; nullopt when it is no ordinary file.
  virtual Result<std::optional<Content>> open_to_read(const std::string& entry) = 0;

  // Makes a temporary file of that name, locked until the map is closed, and writes the whole
  // content. False when the name is taken. After a failure there is no such file.
  virtual Result<bool> make_temporary(const std::string& entry, std::string_view content) = 0;
};

// A file of an open map that is to be flushed: its content and its names.
struct Unflushed {
  OpenMap& map;
  std::string entry;
  std::string what;  // it is, or will be, in the words of a message
  Result<Done> flushed = Done{};
};
