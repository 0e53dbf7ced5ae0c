// A set of hashes that takes some 9 to 18 bytes for each.
#pragma once

#include <cstddef>
#include <vector>

class HashSet {
public:
  void insert(std::size_t hash);
  bool contains(std::size_t hash) const;
  void clear() { *this = HashSet(); }

private:
  // Where the hash is, or where it would be put.
  std::size_t find(std::size_t hash) const;

  // At most seven eighths are taken. The others hold 0, in whose place 1 is kept.
  std::vector<std::size_t> slots = std::vector<std::size_t>(8);
  std::size_t taken = 0;
};
