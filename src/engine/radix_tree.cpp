// Finds which of many texts a line begins with, in time that does not grow with their number.
#include "engine/radix_tree.h"

#include <algorithm>

namespace {

std::size_t common_length(std::string_view a, std::string_view b) {
  const auto ends = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
  return static_cast<std::size_t>(ends.first - a.begin());
}

}  // namespace

RadixTree::RadixTree(const std::vector<std::string_view>& texts) {
  Texts sorted;
  for (const std::string_view text : texts)
    sorted.emplace_back(text, sorted.size());
  std::sort(sorted.begin(), sorted.end());
  nodes.push_back({"", 0});
  firsts = " ";
  std::vector<Range> ranges{{0, sorted.size(), 0}};
  for (std::size_t node = 0; node < nodes.size(); ++node)
    add_children(node, sorted, ranges);
}

// Of the texts in a node's range those that end at the node come first; the others go to its
// children, by their next character.
void RadixTree::add_children(std::size_t node, const Texts& sorted, std::vector<Range>& ranges) {
  auto begin = ranges[node].begin;
  const auto end = ranges[node].end;
  const auto common = ranges[node].common;
  for (; begin < end && sorted[begin].first.size() == common; ++begin)
    nodes[node].number = std::max(nodes[node].number, sorted[begin].second);
  nodes[node].children = nodes.size();
  while (begin < end) {
    const std::string_view first = sorted[begin].first.substr(common);
    const auto after =
        std::partition_point(sorted.begin() + static_cast<std::ptrdiff_t>(begin),
                             sorted.begin() + static_cast<std::ptrdiff_t>(end),
                             [&](const auto& text) { return text.first[common] == first.front(); });
    const std::string_view last = std::prev(after)->first.substr(common);
    const std::size_t length = common_length(first, last);
    firsts += first.front();
    nodes.push_back({first.substr(1, length - 1), nodes[node].number});
    const auto next = static_cast<std::size_t>(after - sorted.begin());
    ranges.push_back({begin, next, common + length});
    begin = next;
  }
  nodes[node].count = nodes.size() - nodes[node].children;
}

std::size_t RadixTree::find(std::string_view line) const {
  const Node* node = &nodes.front();
  while (!line.empty()) {
    const std::string_view heads(firsts.data() + node->children, node->count);
    const auto at = heads.find(line.front());
    line.remove_prefix(1);
    if (at == heads.npos || !line.starts_with(nodes[node->children + at].rest))
      break;
    node = &nodes[node->children + at];
    line.remove_prefix(node->rest.size());
  }
  return node->number;
}
