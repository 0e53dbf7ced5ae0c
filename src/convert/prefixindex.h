// Finds which of many texts a line begins with, in a time that does not grow with their number.
#pragma once

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

// A radix tree: every text ends at a node, and each node knows the highest number of the texts that
// end at it or above it. The texts are views; they must outlive the index.
class PrefixIndex {
public:
  // Adds a text. Of equal texts the highest number counts.
  void add(std::string_view text, std::size_t number);

  // Call once after the last `add`: makes the nodes know the texts above them.
  void finish();

  // The highest number among the texts that `line` begins with; 0 when there is none.
  std::size_t find(std::string_view line) const;

private:
  struct Node {
    std::string_view label;  // the characters that lead here from the node above
    std::size_t number = 0;
    std::vector<std::pair<unsigned char, std::size_t>> children;  // first character, node
  };

  std::size_t child(std::size_t node, char first) const;
  std::size_t addnode(std::string_view label, std::size_t number);
  void split(std::size_t node, std::size_t length);

  std::vector<Node> nodes{Node{}};  // the root is node 0
};
