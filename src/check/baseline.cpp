// What a current map looks like, line by line.
#include "check/baseline.h"

#include "check/finding.h"
#include "check/sections.h"
#include "engine/numbers.h"

#include <algorithm>

namespace {

// The texts of a sorted list that begin with `start`.
auto beginning_with(const std::vector<std::string_view>& sorted, std::string_view start) {
  return std::ranges::equal_range(
      sorted, start, {}, [&](std::string_view text) { return text.substr(0, start.size()); });
}

}  // namespace

// A text is sorted behind those that it begins with, so the index finds the longest.
Baseline::Baseline(std::string filename_in, Result<std::string> text) {
  filename = std::move(filename_in);
  if (text)
    lines = LineArray::split(*std::move(text));
  else
    failure = text.failure();
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
    unindenteds.push_back(unindented(line));
    words.insert(first_word(line));
    spellings[lowered(first_word(line))] = first_word(line);
    order.push_back(index.find(line));
  }
  std::ranges::sort(unindenteds);
  add_order();
}

void Baseline::add_order() {
  std::set<std::size_t> openers;  // a deeper line follows
  for (std::size_t i = 1; i < order.size(); ++i) {
    const std::size_t a = order[i - 1], b = order[i];
    following.emplace(a, b);
    if (depth_of(b) > depth_of(a))
      openers.insert(a);
    if (depth_of(b) < depth_of(a))
      closers.insert(b);
  }
  for (const auto& [a, b] : following) {
    behind_depth.emplace(depth_of(a), b);
    before_depth.emplace(a, depth_of(b), closers.contains(b));
  }
  places.resize(texts.size());
  for (std::size_t i = 0; i < order.size(); ++i) {
    const bool bend = openers.contains(order[i]) || closers.contains(order[i]);
    places[order[i]].push_back(i);
    bends.push_back(bends.back() + (bend ? 1 : 0));
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
  if (output.marker != Marker::none && !unindented(output.text).empty())
    for (const std::string_view& text : beginning_with(texts, output.text))
      found.push_back(static_cast<std::size_t>(&text - texts.data()));
  if (const std::size_t k = kind(output.text); k > 0)
    found.push_back(k);
  return found;
}

std::string Baseline::missing(std::size_t a, std::size_t b) const {
  for (const std::size_t i : places[a]) {
    const auto j = std::ranges::upper_bound(places[b], i + 1);
    if (!closers.contains(a) && j != places[b].end() && bends[*j] == bends[i + 1])
      return ", which has " + quote(texts[order[i + 1]]) + " between";
  }
  return "";
}

bool Baseline::may_follow(std::size_t a, std::size_t b) const {
  const bool closes = closers.contains(b);
  return (depth_of(b) < depth_of(a) && closes) || behind_depth.contains({depth_of(a), b}) ||
         before_depth.contains({a, depth_of(b), closes});
}

std::string_view Baseline::misspelt(std::string_view word) const {
  const auto found = spellings.find(lowered(word));
  return found == spellings.end() || has_word(word) ? "" : found->second;
}

bool Baseline::has_start(std::string_view start) const {
  return !beginning_with(texts, start).empty();
}

std::set<std::string_view> Baseline::words_like(std::string_view recognition) const {
  std::set<std::string_view> found;
  for (const std::string_view text :
       beginning_with(is_blank(recognition.front()) ? texts : unindenteds, recognition)) {
    const auto rest = text.substr(recognition.size());
    if (rest.empty() || !is_letter(rest.front()))
      return {};
    found.insert(first_word(text));
  }
  return found;
}

std::size_t Baseline::depth_of(std::size_t kind) const { return depth(texts[kind]); }
