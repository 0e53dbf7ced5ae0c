// The files of the machine that the program works on, behind one seam: each machine has its own.
//
// Paths are Windows texts in UTF-8: "C:\Maps\a.galaxy"; a name without a drive is taken from the
// process's current folder, "\" alone is the root of the drive that holds it. Empty components are
// skipped, and a name that Windows would not allow names nothing. Names are found ignoring letter
// case: the exact spelling first, then the first in the order of `list`. A link counts as what it
// leads to, except where a function says otherwise. Contents are bytes.
#pragma once

#include "platform/replacing.h"
#include "platform/result.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

// What a lookup counts. Hidden and system entries never match.
enum class Match { files, files_and_folders };

struct Entry {
  std::string name;
  bool folder;
  bool link;  // met as a link, and described as what it leads to
};

class Files {
public:
  virtual ~Files() = default;

  // The name of the first entry that `path` matches, empty when there is none. A path that ends in
  // "\" matches the entries of that folder, the folder's own "." among its folders; any other path
  // matches an entry of exactly that name.
  virtual Result<std::string> lookup(const std::string& path, Match match) = 0;

  // The subfolders of a folder and those of its files whose names match `pattern` (see
  // platform/path_rules.h), in ascending order of their names; hidden and system entries left out.
  // The temporary files that a killed run left in the folder are removed on the way, nobody else's.
  virtual Result<std::vector<Entry>> list(const std::string& folder, std::string_view pattern) = 0;

  // A folder's full path, with its drive, as its names are spelled, without "\" at the end except
  // for a drive root. Fails when there is no such folder.
  virtual Result<std::string> full_path(const std::string& folder) = 0;

  // A file's whole content. What `lookup` does not match as a file counts as missing. Fails beyond
  // `max_file_size` bytes: no map is that large, and a file that fills the memory would end the
  // program.
  static constexpr long long max_file_size = 1LL << 30;
  virtual Result<std::string> read(const std::string& path) = 0;

  // Reads a map, like `read`, so that it can be replaced (see platform/replacing.h).
  virtual Result<std::unique_ptr<OpenMap>> open_map(const std::string& path) = 0;

  // Makes a text file anew, or adds to its end. Neither goes through a link.
  virtual Result<Done> write(const std::string& path, std::string_view text) = 0;
  virtual Result<Done> append(const std::string& path, std::string_view text) = 0;

protected:
  // The name of the first file that `list` gives of a folder, empty when there is none: what a
  // lookup of a path that ends in "\" answers among files alone.
  std::string first_listed_file(const std::string& folder);
};
