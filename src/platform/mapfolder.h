// The few steps of which a replacement is made, in the folder of its map: each machine has its own.
#pragma once

#include "platform/result.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

// Names are those of entries of the folder. No step follows a link.
class MapFolder {
public:
  // Why a step failed, in the system's own words.
  struct Reason {
    std::string words;
  };
  template <class Value> using Answer = Result<Value, Reason>;

  enum class Kind { nothing, file, folder, other };

  // Tells a file from any other, and from itself once somebody has written to it.
  struct Stamp {
    std::uint64_t device, file, size, time;
    bool settled;  // whoever writes to the file from now on gives it another time

    bool same_file(const Stamp& other) const {
      return device == other.device && file == other.file;
    }
    bool operator==(const Stamp& other) const {
      return same_file(other) && size == other.size && time == other.time;
    }
  };

  explicit MapFolder(std::string map) : map_name(std::move(map)) {}
  virtual ~MapFolder() = default;

  const std::string map_name;  // as the folder spells it

  // A name that a temporary file has: hidden where a "." hides, and too unlike a map's for any
  // search. It is ".vora-map-updater-", a random decimal number and ".tmp".
  static std::string temporary_name();
  static bool is_temporary(std::string_view name);

  // Keeps other runs from replacing the map, until the object is gone, where the file system knows
  // how. Nothing when another run is at it. The stamp is that of the file that was read: when it is
  // settled, the one that the file had before. `holds` and `flush` may work on that file even if
  // another has taken its name: `stamp_of` alone surely tells.
  virtual Answer<std::optional<Stamp>> lock() = 0;

  // How `name` is spelled in the folder, where letter case may differ; empty when it is free.
  virtual std::string spelled(const std::string& name) = 0;

  // `nothing` alone says that there is none: a look that fails is a failure.
  virtual Answer<Kind> kind_of(const std::string& name) = 0;

  // Fails when it is not an ordinary file.
  virtual Answer<Stamp> stamp_of(const std::string& name) = 0;

  // Whether it is an ordinary file that holds just `text`.
  virtual Answer<bool> holds(const std::string& name, std::string_view text) = 0;

  // Sees to it that a file's content is on the disk, and the names that it has.
  virtual Answer<Done> flush(const std::string& name) = 0;

  // Makes a hidden file of a name that no search finds, writes the whole text and flushes it to the
  // disk. Gives its name. Once it is given another name it has the permissions of the locked map,
  // on Windows its attributes.
  virtual Answer<std::string> write_temporary(std::string_view text) = 0;

  virtual void remove(const std::string& name) = 0;

  // Gives an entry another name. What had it is gone, except for its second name `kept`, if that is
  // not empty, which goes on as it was.
  virtual Answer<Done> rename(const std::string& from, const std::string& to,
                              const std::string& kept) = 0;

  // Gives an entry another name that must be free; false when it is not.
  virtual Answer<bool> rename_no_replace(const std::string& from, const std::string& to) = 0;

  // Gives a file a second name, which must be free; false when the file system knows no such thing.
  virtual Answer<bool> link(const std::string& from, const std::string& to) = 0;

protected:
  static const Reason not_ordinary;

  // Reads the next so many bytes, less only at a file's end; nothing when that fails.
  using Read = std::function<std::optional<std::size_t>(char* into, std::size_t size)>;

  // Whether what `read` gives begins with `text`; nothing when reading fails.
  static std::optional<bool> reads(const Read& read, std::string_view text);
};
