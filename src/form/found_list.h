// The maps that a search has found.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// An array of full paths, numbered from 0 in the order in which they were added, and behind them
// one empty text. Each folder is kept once: the paths of a hundred thousand maps are tens of
// megabytes.
class FoundList {
public:
  // Adds a file of a folder, whose path has no "\" at its end. The files of a folder belong
  // together.
  void add(const std::string& folder, std::string_view name);

  void clear() { *this = FoundList(); }

  // The number of files and one.
  std::size_t size() const { return ends.size() + 1; }

  // The full path of file `index`; the empty text beyond the last.
  std::string operator[](std::size_t index) const;

private:
  struct Folder {
    std::string path;
    std::size_t first;  // number of its first file
  };

  std::vector<Folder> folders;
  std::string names;              // of all files, one after the other
  std::vector<std::size_t> ends;  // where in `names` each ends
};
