// The difference between a map and its conversion.
#include "check/map_run.h"

#include <algorithm>
#include <ranges>

namespace {

constexpr std::size_t context = 3;

// A line of the difference: in both texts (' '), only in the old one ('-') or in the new one ('+').
struct Step {
  char sign;
  std::string_view line;
};

// The pieces of a text, each with its end.
std::vector<std::string_view> split(std::string_view text, std::string_view end) {
  std::vector<std::string_view> pieces;
  while (!text.empty()) {
    const auto at = text.find(end);
    pieces.push_back(text.substr(0, at == text.npos ? at : at + end.size()));
    text.remove_prefix(pieces.back().size());
  }
  return pieces;
}

// A line of the result is kept if it is the one that it comes from. A line may have a lone LF,
// which ends a line of the difference.
std::vector<Step> compare(const MapRun& run) {
  const auto old = split(run.map.lines.text(), LineArray::line_end),
             current = split(*run.result, LineArray::line_end);
  std::vector<Step> steps;
  std::size_t i = 0, j = 0;  // the lines compared so far
  const auto add_until = [&](char sign, const auto& lines, std::size_t& at, std::size_t end) {
    for (; at < end; ++at)
      for (const std::string_view piece : split(lines[at], "\n"))
        steps.push_back({sign, piece});
  };
  for (std::size_t k = 0; k < run.origins.size(); ++k)
    if (const std::size_t from = run.origins[k].line; from >= i && old[from] == current[k]) {
      add_until('-', old, i, from);
      add_until('+', current, j, k);
      add_until(' ', old, i, from + 1);
      ++j;
    }
  add_until('-', old, i, old.size());
  add_until('+', current, j, current.size());
  return steps;
}

// A range of lines behind `before` others. One without lines stands behind the line it names.
std::string range(std::size_t before, std::size_t count) {
  return std::to_string(count > 0 ? before + 1 : before) +
         (count == 1 ? "" : "," + std::to_string(count));
}

}  // namespace

std::string unified_diff(const MapRun& run) {
  const auto steps = compare(run);
  const auto near_change = [&](std::size_t i) {
    const std::size_t before = std::min(i, context);
    auto near = steps | std::views::drop(i - before) | std::views::take(before + 1 + context);
    return std::ranges::any_of(near, [](const Step& step) { return step.sign != ' '; });
  };
  std::string out;
  std::size_t old_line = 0, new_line = 0;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    std::string hunk;
    std::size_t removed = 0, added = 0;
    for (; i < steps.size() && near_change(i); ++i) {
      const auto& [sign, line] = steps[i];
      hunk.append(1, sign).append(line);
      hunk += line.ends_with('\n') ? "" : "\n\\ No newline at end of file\n";
      removed += sign != '+' ? 1 : 0;
      added += sign != '-' ? 1 : 0;
    }
    if (!hunk.empty())
      out += "@@ -" + range(old_line, removed) + " +" + range(new_line, added) + " @@\n" + hunk;
    old_line += removed + 1;  // the next step is not shown, and so in both texts
    new_line += added + 1;
  }
  // A tab ends a name, which may have blanks.
  const std::string& path = run.map.path;
  return out.empty() ? "" : "--- " + path + "\t\n+++ " + path + "\t(converted)\n" + out;
}
