// Finds which of many texts a line begins with, in time that does not grow with their number.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// A radix tree: each text ends at a node. A node stores the highest number of the texts that end
// there or at an ancestor. The children of a node are adjacent.
class RadixTree {
public:
  RadixTree() : RadixTree(std::vector<std::string_view>()) {}

  // The texts are numbered from 0. They are views, which must outlive the tree.
  explicit RadixTree(const std::vector<std::string_view>& texts);

  // The highest number among the texts that `line` begins with; 0 when there is none.
  std::size_t find(std::string_view line) const;

private:
  struct Node {
    std::string_view rest;  // of the characters on the way from its parent, without the first
    std::size_t number;
    std::size_t children = 0;  // the first child, and how many children there are
    std::size_t count = 0;
  };

  // The sorted texts that end at a node or below it, and how many first characters they share.
  struct Range {
    std::size_t begin, end;
    std::size_t common;
  };
  using Texts = std::vector<std::pair<std::string_view, std::size_t>>;

  void add_children(std::size_t node, const Texts& sorted, std::vector<Range>& ranges);

  std::vector<Node> nodes;  // the root is node 0
  std::string firsts;       // the first character on the way from its parent to each node
};
