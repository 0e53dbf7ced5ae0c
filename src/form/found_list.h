// The maps that a search has found.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Full paths, numbered from 0 in the order in which they were added, and one empty element at the
// end. Each folder is stored once: the full paths of 100,000 maps would take tens of megabytes.
class FoundList {
public:
  // Adds a file of `folder`, a path without a trailing "\". Add the files of a folder one after the
  // other.
  void add(const std::string& folder, std::string_view name);

  void clear() { *this = FoundList(); }

  // The number of files plus one.
  std::size_t size() const { return ends.size() + 1; }

  // The full path of file `index`; empty beyond the last.
  std::string operator[](std::size_t index) const;

private:
  struct Folder {
    std::string path;
    std::size_t first;  // number of its first file
  };

  std::vector<Folder> folders;
  std::string names;              // of all files, without separators
  std::vector<std::size_t> ends;  // the end of each in `names`
};
