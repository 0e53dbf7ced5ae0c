// Finds which of many texts a line begins with, in a time that does not grow with their number.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// A radix tree: each text ends at a node, and each node knows the highest number of the texts that
// end at it or above it. The nodes below a node lie side by side.
class PrefixIndex {
public:
  PrefixIndex() : PrefixIndex(std::vector<std::string_view>()) {}

  // The texts are numbered from 0. They are views, which must outlive the index.
  explicit PrefixIndex(const std::vector<std::string_view>& texts);

  // The highest number among the texts that `line` begins with; 0 when there is none.
  std::size_t find(std::string_view line) const;

private:
  struct Node {
    std::string_view rest;  // of the characters that lead here from the node above
    std::size_t number;
    std::size_t below = 0;  // the first node below, and how many there are
    std::size_t count = 0;
  };

  // Some of the sorted texts, which have so many first characters in common: all texts that end at
  // a node or below it.
  struct Range {
    std::size_t begin, end;
    std::size_t common;
  };
  using Texts = std::vector<std::pair<std::string_view, std::size_t>>;

  void add_children(std::size_t node, const Texts& sorted, std::vector<Range>& ranges);

  std::vector<Node> nodes;  // the root is node 0
  std::string firsts;       // the first of the characters that lead to each node
};
