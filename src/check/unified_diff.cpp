// The difference between a map and its conversion.
//
// The lines that the passes copied are known to be equal. So only the lines between them are
// compared, which are few, and the time grows with the map alone.
#include "check/unified_diff.h"

#include <algorithm>

namespace {

constexpr std::size_t context = 3;
constexpr std::size_t largest_table = 4'000'000;  // of lines compared with lines

// The lines of a text with their LF.
std::vector<std::string_view> split(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t length = std::min(text.find('\n'), text.size() - 1) + 1;
    lines.push_back(text.substr(0, length));
    text.remove_prefix(length);
  }
  return lines;
}

// A line of the difference: kept (' '), only in the old text ('-') or only in the new one ('+').
struct Step {
  char sign;
  std::string_view line;
};

class Diff {
public:
  Diff(std::string_view old_text, std::string_view new_text)
      : old(split(old_text)), current(split(new_text)) {}

  // Compares the lines up to `i` and `j`, and keeps a longest common subsequence. More lines than
  // the table has room for count as changed.
  void compare_until(std::size_t i, std::size_t j) {
    const std::size_t row = at, column = new_at, width = j - column + 1;
    const bool fits = i - row + 1 <= largest_table / width;
    std::vector<std::uint32_t> table(fits ? (i - row + 1) * width : 0);
    const auto longest = [&](std::size_t r, std::size_t c) -> std::uint32_t& {
      return table[(r - row) * width + c - column];
    };
    for (std::size_t r = i; fits && r-- > row;)
      for (std::size_t c = j; c-- > column;)
        longest(r, c) = old[r] == current[c] ? longest(r + 1, c + 1) + 1
                                             : std::max(longest(r + 1, c), longest(r, c + 1));
    while (at < i || new_at < j)
      if (fits && at < i && new_at < j && old[at] == current[new_at])
        keep();
      else if (new_at == j ||
               (at < i && (!fits || longest(at + 1, new_at) >= longest(at, new_at + 1))))
        steps.push_back({'-', old[at++]});
      else
        added.push_back({'+', current[new_at++]});
  }

  // Of a change the old lines come first.
  void keep() {
    end_change();
    steps.push_back({' ', old[at++]});
    ++new_at;
  }
  void end_change() {
    steps.insert(steps.end(), added.begin(), added.end());
    added.clear();
  }

  std::vector<std::string_view> old, current;
  std::size_t at = 0, new_at = 0;  // the lines compared so far
  std::vector<Step> steps, added;  // the latter behind the last kept line
};

// A range of lines behind `before` others. One without lines stands behind the line it names.
std::string range(std::size_t before, std::size_t count) {
  return std::to_string(count > 0 ? before + 1 : before) +
         (count == 1 ? "" : "," + std::to_string(count));
}

// Appends the hunk of the steps `begin` up to but not including `end`, and counts their lines.
void write_hunk(const Step* begin, const Step* end, std::size_t& old_line, std::size_t& new_line,
                std::string& out) {
  const auto count = [&](char other) {
    return static_cast<std::size_t>(
        std::count_if(begin, end, [&](const Step& step) { return step.sign != other; }));
  };
  out += "@@ -" + range(old_line, count('+')) + " +" + range(new_line, count('-')) + " @@\n";
  old_line += count('+');
  new_line += count('-');
  for (const Step* step = begin; step < end; ++step) {
    out.append(1, step->sign).append(step->line);
    if (!out.ends_with('\n'))
      out += "\n\\ No newline at end of file\n";
  }
}

}  // namespace

std::string unified_diff(const MapRun& run) {
  Diff diff(run.map.lines.text(), *run.result);
  for (std::size_t j = 0; j < std::min(diff.current.size(), run.origins.size()); ++j)
    if (const std::size_t i = run.origins[j].line; !run.origins[j].writer && i >= diff.at &&
                                                   j >= diff.new_at &&
                                                   diff.old[i] == diff.current[j]) {
      diff.compare_until(i, j);
      diff.keep();
    }
  diff.compare_until(diff.old.size(), diff.current.size());
  diff.end_change();
  // Steps near a change are shown.
  std::vector<bool> shown(diff.steps.size());
  for (std::size_t i = 0; i < shown.size(); ++i)
    if (diff.steps[i].sign != ' ')
      std::fill(shown.begin() + static_cast<std::ptrdiff_t>(i - std::min(i, context)),
                shown.begin() +
                    static_cast<std::ptrdiff_t>(std::min(i + context + 1, shown.size())),
                true);
  std::string out;
  std::size_t old_line = 0, new_line = 0;
  for (std::size_t i = 0, end; i < shown.size(); i = end) {
    for (end = i; end < shown.size() && shown[end] == shown[i];)
      ++end;
    if (shown[i]) {
      write_hunk(&diff.steps[i], &diff.steps[i] + (end - i), old_line, new_line, out);
    } else {
      old_line += end - i;
      new_line += end - i;
    }
  }
  // A tab ends a name, which may have blanks.
  const std::string& path = run.map.path;
  return out.empty() ? "" : "--- " + path + "\t\n+++ " + path + "\t(converted)\n" + out;
}
