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
  virtual Result<std::string> lookup(const std::string& path, Match match) = 0;

  // The subfolders of a folder and those of its files whose names match `pattern` (see
  // platform/path_rules.h), in ascending order of their names, without hidden and system entries.
  // Stale temporaries that killed runs left in the folder are removed on the way.
  virtual Result<std::vector<Entry>> list(const std::string& folder, std::string_view pattern) = 0;

  // A folder's full path with its drive, as its names are spelled on the disk; it ends in "\" only
  // for a drive root. Fails when there is no such folder.
  virtual Result<std::string> full_path(const std::string& folder) = 0;

  // A file's whole content. What `lookup` does not match as a file counts as missing. Fails beyond
  // `max_file_size` bytes: no map is that large, and a file that fills the memory would end the
  // program.
  static constexpr long long max_file_size = 1LL << 30;
  virtual Result<std::string> read(const std::string& path) = 0;

  // Reads a map, like `read`, so that it can be replaced (see platform/replacing.h).
  virtual Result<std::unique_ptr<OpenMap>> open_map(const std::string& path) = 0;

  // How many maps may be open at once and still leave the program the descriptors that it needs
  // for other files. At least 1.
  virtual std::size_t most_open_maps() = 0;

  // Flushes files of maps that this object has opened, all of them to the disk at the same time,
  // and notes what came of each. A failure is `unconfirmed` if the system was asked to flush.
  virtual void flush(std::span<Unflushed> files) = 0;

  // Writes a text file anew, or appends to it. Neither follows a symlink.
  virtual Result<Done> write(const std::string& path, std::string_view text) = 0;
  virtual Result<Done> append(const std::string& path, std::string_view text) = 0;

protected:
  // The name of the first file that `list` returns for a folder, empty when there is none: the
  // lookup of a path that ends in "\" among files.
  std::string first_listed_file(const std::string& folder);
};
