// The files of the machine that the program works on; each machine implements this interface.
//
// Paths are Windows paths in UTF-8: "C:\Maps\a.galaxy". A path without a drive is relative to the
// process's current folder; "\" alone is the root of that folder's drive. Empty components are
// skipped, and a name that Windows would not allow is never found. Names are case-insensitive: the
// exact spelling is found first, then the first in the order of `list`. A symlink counts as what it
// points to, except where a function says otherwise. Contents are bytes.
#pragma once

#include "platform/open_map.h"
#include "platform/result.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// What a lookup counts. Hidden and system entries never match.
enum class Match { files, files_and_folders };

struct Entry {
  std::string name;
  bool folder;
  bool link;  // it is a symlink, and `folder` is about what it points to
};

class Files {
public:
  virtual ~Files() = default;

  // The name of the first entry that `path` matches, empty when there is none. A path that ends in
  // "\" matches the entries of that folder, the folder's own "." among its folders; any other path
  // matches an entry of exactly that name.
  Result<std::string> lookup(const std::string& path, Match match);

  // The subfolders of a folder and those of its files whose names match `pattern` (see
  // platform/path_rules.h), in ascending order of their names, without hidden and system entries.
  // Stale temporaries that killed runs left in the folder are removed on the way.
  Result<std::vector<Entry>> list(const std::string& folder, std::string_view pattern);

  // A folder's full path with its drive, as its names are spelled on the disk; it ends in "\" only
  // for a drive root. Fails when there is no such folder.
  virtual Result<std::string> full_path(const std::string& folder) = 0;

  // A file's whole content. What `lookup` does not match as a file counts as missing. Fails beyond
  // `max_file_size` bytes: no map is that large, and a file that fills the memory would end the
  // program.
  static constexpr std::uint64_t max_file_size = 1 << 30;
  Result<std::string> read(const std::string& path);

  // Reads a map, like `read`, so that it can be replaced (see platform/replacing.h).
  Result<std::unique_ptr<OpenMap>> open_map(const std::string& path);

  // How many maps may be open at once and still leave the program the descriptors that it needs
  // for other files. At least 1.
  virtual std::size_t most_open_maps() = 0;

  // Flushes files of maps that this object has opened, all of them to the disk at the same time,
  // and notes what came of each. A failure is `unconfirmed` if the system was asked to flush.
  virtual void flush(std::span<Unflushed> files) = 0;

  // Writes a text file anew, or appends to it. Neither follows a symlink. A file with another hard
  // link is somebody's: it is never written into, but replaced or, when appending, refused.
  Result<Done> write(const std::string& path, std::string_view text);
  Result<Done> append(const std::string& path, std::string_view text);

protected:
  // The functions below are the steps of those above; each machine has its own.

  // What a path names that ends neither in "\" nor in "\.": a name as the folder spells it, empty
  // when there is neither a file nor a folder, or a hidden one.
  struct Found {
    std::string name{};
    bool folder = false;
  };
  virtual Result<Found> find_entry(const std::string& path) = 0;

  // What `list` returns, and the names of all temporary files in the folder.
  struct Listing {
    std::vector<Entry> entries{};
    std::vector<std::string> temporaries{};
  };
  virtual Result<Listing> read_folder(const std::string& folder, std::string_view pattern) = 0;

  // Removes a temporary file that a killed run left. The rule: it is an ordinary file and no
  // symlink, and its lock is free. A run holds the locks of its temporary files, and the system
  // releases them when the run is killed. Where there are no locks nothing is removed.
  virtual void remove_stale_temporary(const std::string& folder, const std::string& name) = 0;

  // A file that is open: the map, still without its text, and what is to be read. There is no map
  // when the path names no ordinary file, or a hidden one.
  struct OpenedFile {
    std::unique_ptr<OpenMap> map{};
    OpenMap::Content content{};
  };
  virtual Result<OpenedFile> open_file(const std::string& path) = 0;

  // Writes a text file, never through a symlink: anew, at its end, or one that must not be there
  // yet. False, with nothing written, when it has another hard link.
  enum class Writing { anew, at_end, new_file };
  virtual Result<bool> write_text(const std::string& path, std::string_view text,
                                  Writing writing) = 0;
  virtual Result<Done> remove_text(const std::string& path) = 0;
};
