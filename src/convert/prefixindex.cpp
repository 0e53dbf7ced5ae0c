// Finds which of many texts a line begins with, in a time that does not grow with their number.
#include "convert/prefixindex.h"

#include <algorithm>

namespace {

constexpr std::size_t none = 0;  // the root is nobody's child

std::size_t commonlength(std::string_view a, std::string_view b) {
  const auto ends = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
  return static_cast<std::size_t>(ends.first - a.begin());
}

}  // namespace

std::size_t PrefixIndex::child(std::size_t node, char first) const {
  const auto& children = nodes[node].children;
  const auto key = static_cast<unsigned char>(first);
  const auto found = std::lower_bound(children.begin(), children.end(), std::pair(key, none));
  return found != children.end() && found->first == key ? found->second : none;
}

std::size_t PrefixIndex::addnode(std::string_view label, std::size_t number) {
  nodes.push_back({label, number, {}});
  return nodes.size() - 1;
}

// Puts a node between `node` and the one above, at `length` characters of its label. The upper part
// stays at the old place, so that the node above need not change.
void PrefixIndex::split(std::size_t node, std::size_t length) {
  const std::size_t lower = addnode(nodes[node].label.substr(length), nodes[node].number);
  nodes[lower].children = std::move(nodes[node].children);
  nodes[node].label = nodes[node].label.substr(0, length);
  nodes[node].number = 0;
  nodes[node].children = {{static_cast<unsigned char>(nodes[lower].label.front()), lower}};
}

void PrefixIndex::add(std::string_view text, std::size_t number) {
  std::size_t node = 0;
  while (!text.empty()) {
    const std::size_t next = child(node, text.front());
    if (next == none) {
      const std::size_t leaf = addnode(text, 0);
      const std::pair edge(static_cast<unsigned char>(text.front()), leaf);
      auto& children = nodes[node].children;
      children.insert(std::upper_bound(children.begin(), children.end(), edge), edge);
      node = leaf;
      break;
    }
    const std::size_t common = commonlength(nodes[next].label, text);
    if (common < nodes[next].label.size())
      split(next, common);
    text.remove_prefix(common);
    node = next;
  }
  nodes[node].number = std::max(nodes[node].number, number);
}

void PrefixIndex::finish() {
  std::vector<std::size_t> open{0};
  while (!open.empty()) {
    const std::size_t node = open.back();
    open.pop_back();
    for (const auto& [first, below] : nodes[node].children) {
      nodes[below].number = std::max(nodes[below].number, nodes[node].number);
      open.push_back(below);
    }
  }
}

std::size_t PrefixIndex::find(std::string_view line) const {
  std::size_t node = 0;
  while (!line.empty()) {
    const std::size_t next = child(node, line.front());
    if (next == none || !line.starts_with(nodes[next].label))
      break;
    line.remove_prefix(nodes[next].label.size());
    node = next;
  }
  return nodes[node].number;
}
