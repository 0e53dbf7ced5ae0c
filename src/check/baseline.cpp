// What a current map looks like, line by line.
#include "check/baseline.h"

#include "check/finding.h"
#include "check/sections.h"

#include <algorithm>

// Kinds are in the order of their lengths, so that the index finds the longest.
Baseline::Baseline(LineArray lines_in) : lines(std::move(lines_in)) {
  std::vector<std::string_view> shown;
  for (std::size_t i = 0; i < lines.size(); ++i)
    if (!is_remark(lines[i]) && !unindented(lines[i]).empty())
      shown.push_back(lines[i]);
  const std::set<std::string_view> distinct(shown.begin(), shown.end());
  texts.insert(texts.end(), distinct.begin(), distinct.end());
  std::ranges::sort(texts, {}, [](const std::string& text) {
    return std::pair(text.size(), std::string_view(text));
  });
  index = PrefixIndex({texts.begin(), texts.end()});
  for (const std::string_view line : shown) {
    words.emplace(first_word(line));
    order.push_back(index.find(line));
  }
  for (std::size_t i = 1; i < order.size(); ++i) {
    const std::size_t a = order[i - 1], b = order[i];
    following.emplace(a, b);
    if (depth(b) > depth(a))
      openers.insert(a);
    if (depth(b) < depth(a))
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

std::set<std::size_t> Baseline::kinds(const OutputLine& output) const {
  std::set<std::size_t> found;
  if (output.marker != Marker::none && !unindented(output.text).empty())
    for (std::size_t k = 1; k < texts.size(); ++k)
      if (texts[k].starts_with(output.text))
        found.insert(k);
  if (const std::size_t k = kind(output.text); k > 0)
    found.insert(k);
  return found;
}

std::string Baseline::missing(std::size_t a, std::size_t b) const {
  for (std::size_t i = 0; i < order.size() && !closers.contains(a); ++i) {
    if (order[i] != a)
      continue;
    std::size_t j = i + 1;
    while (j < order.size() && order[j] != b && is_plain(order[j]))
      ++j;
    if (j > i + 1 && j < order.size() && order[j] == b)
      return ", which has " + quoted(texts[order[i + 1]]) + " between";
  }
  return "";
}

bool Baseline::may_follow(std::size_t a, std::size_t b) const {
  if (depth(b) < depth(a) && closers.contains(b))
    return true;
  return std::ranges::any_of(following, [&](const auto& known) {
    const auto [x, y] = known;
    return (y == b && depth(x) == depth(a)) ||
           (x == a && depth(y) == depth(b) && closers.contains(y) == closers.contains(b));
  });
}

std::set<std::string_view> Baseline::words_like(std::string_view recognition) const {
  std::set<std::string_view> found;
  for (const std::string_view text : texts) {
    const auto line = is_blank(recognition.front()) ? text : unindented(text);
    if (!line.starts_with(recognition))
      continue;
    const auto rest = line.substr(recognition.size());
    if (rest.empty() || !is_letter(rest.front()))
      return {};
    found.insert(first_word(text));
  }
  return found;
}

std::size_t Baseline::depth(std::size_t kind) const {
  return texts[kind].size() - unindented(texts[kind]).size();
}

bool Baseline::is_plain(std::size_t kind) const {
  return !openers.contains(kind) && !closers.contains(kind);
}
