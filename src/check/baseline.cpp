// What a current map looks like, line by line.
#include "check/baseline.h"

#include "check/finding.h"
#include "check/sections.h"

#include <algorithm>

// A text is sorted behind those that it begins with, so the index finds the longest.
Baseline::Baseline(Template file) : Template(std::move(file)) {
  if (const auto last = version_of(lines[1]); has_number(last))
    version = numeric_value(last);
  std::vector<std::string_view> shown;
  for (std::size_t i = 0; i < lines.size(); ++i)
    if (!is_remark(lines[i]) && !unindented(lines[i]).empty())
      shown.push_back(lines[i]);
  std::set<std::string_view> distinct(shown.begin(), shown.end());
  distinct.insert("");
  texts.assign(distinct.begin(), distinct.end());
  index = RadixTree(texts);
  for (const std::string_view line : shown) {
    words.insert(first_word(line));
    order.push_back(index.find(line));
  }
  for (std::size_t i = 1; i < order.size(); ++i) {
    const std::size_t a = order[i - 1], b = order[i];
    following.emplace(a, b);
    if (depth_of(b) > depth_of(a))
      openers.insert(a);
    if (depth_of(b) < depth_of(a))
      closers.insert(b);
  }
}

// A word of the baseline must not go on in the line.
std::size_t Baseline::kind(std::string_view line) const {
  const auto in_word = [](char c) { return is_letter(c) || is_digit(c); };
  const std::size_t found = index.find(line), size = texts[found].size();
  const bool goes_on = found > 0 && size < line.size() && in_word(line[size - 1]);
  return goes_on && in_word(line[size]) ? 0 : found;
}

std::vector<std::size_t> Baseline::kinds(const OutputLine& output) const {
  std::vector<std::size_t> found;
  const bool goes_on = output.marker != Marker::none && !unindented(output.text).empty();
  for (std::size_t k = 1; goes_on && k < texts.size(); ++k)
    if (texts[k].starts_with(output.text))
      found.push_back(k);
  if (const std::size_t k = kind(output.text); k > 0)
    found.push_back(k);
  return found;
}

std::string Baseline::missing(std::size_t a, std::size_t b) const {
  std::size_t behind = 0;  // the line behind the first `a` since a block began or ended
  for (std::size_t i = 0; i < order.size() && !closers.contains(a); ++i) {
    if (order[i] == b && behind > 0)
      return ", which has " + quote(texts[order[behind]]) + " between";
    if (behind > 0 && (openers.contains(order[i]) || closers.contains(order[i])))
      behind = 0;
    if (order[i] == a && behind == 0)
      behind = i + 1;
  }
  return "";
}

bool Baseline::may_follow(std::size_t a, std::size_t b) const {
  const auto is_similar = [&](const auto& pair) {
    const auto [before, behind] = pair;
    const bool like_b =
        depth_of(behind) == depth_of(b) && closers.contains(behind) == closers.contains(b);
    return (behind == b && depth_of(before) == depth_of(a)) || (before == a && like_b);
  };
  return (depth_of(b) < depth_of(a) && closers.contains(b)) ||
         std::ranges::any_of(following, is_similar);
}

std::size_t Baseline::depth_of(std::size_t kind) const { return depth(texts[kind]); }
