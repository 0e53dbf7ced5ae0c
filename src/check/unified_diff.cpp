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
using Lines = std::vector<std::string_view>;

Lines split(std::string_view text) {
  Lines lines;
  while (!text.empty()) {
    const std::size_t length = std::min(text.find('\n'), text.size() - 1) + 1;
    lines.push_back(text.substr(0, length));
    text.remove_prefix(length);
  }
  return lines;
}

// Lines of the old text that others of the new one replace; either may be none.
struct Change {
  std::size_t old_begin, old_end, new_begin, new_end;
};

class Diff {
public:
  Diff(const Lines& old_in, const Lines& current_in) : old(old_in), current(current_in) {}

  // Compares the lines up to `i` and `j`, which are equal or the ends of the texts, and keeps a
  // longest common subsequence. More lines than the table has room for count as changed.
  void compare_until(std::size_t i, std::size_t j) {
    while (old_end < i && new_end < j && old[old_end] == current[new_end])
      keep();
    const std::size_t row = old_end, column = new_end, width = j - column + 1;
    const bool fits = (i - row + 1) <= largest_table / width;
    std::vector<std::uint32_t> table(fits ? (i - row + 1) * width : 0);
    const auto longest = [&](std::size_t r, std::size_t c) -> std::uint32_t& {
      return table[(r - row) * width + c - column];
    };
    for (std::size_t r = i; fits && r-- > row;)
      for (std::size_t c = j; c-- > column;)
        longest(r, c) = old[r] == current[c] ? longest(r + 1, c + 1) + 1
                                             : std::max(longest(r + 1, c), longest(r, c + 1));
    while (fits && old_end < i && new_end < j)
      if (old[old_end] == current[new_end])
        keep();
      else if (longest(old_end + 1, new_end) >= longest(old_end, new_end + 1))
        change_until(old_end + 1, new_end);
      else
        change_until(old_end, new_end + 1);
    change_until(i, j);
  }

  // Keeps a line that is in both texts.
  void keep() {
    ++old_end;
    ++new_end;
  }

  const Lines& old;
  const Lines& current;
  std::size_t old_end = 0, new_end = 0;  // the lines compared so far
  std::vector<Change> changes;

private:
  void change_until(std::size_t i, std::size_t j) {
    if (i == old_end && j == new_end)
      return;
    if (changes.empty() || changes.back().old_end != old_end || changes.back().new_end != new_end)
      changes.push_back({old_end, i, new_end, j});
    changes.back().old_end = old_end = i;
    changes.back().new_end = new_end = j;
  }
};

std::vector<Change> compare(const Lines& old, const Lines& current,
                            const std::vector<Origin>& origins) {
  Diff diff(old, current);
  for (std::size_t j = 0; j < std::min(current.size(), origins.size()); ++j) {
    const std::size_t i = origins[j].line;
    if (origins[j].writer || i < diff.old_end || j < diff.new_end || old[i] != current[j])
      continue;
    diff.compare_until(i, j);
    diff.keep();
  }
  diff.compare_until(old.size(), current.size());
  return std::move(diff.changes);
}

void write_lines(const Lines& lines, std::size_t begin, std::size_t end, char sign,
                 std::string& out) {
  for (std::size_t i = begin; i < end; ++i) {
    out.append(1, sign).append(lines[i]);
    if (!out.ends_with('\n'))
      out += "\n\\ No newline at end of file\n";
  }
}

// The place of a hunk in one of the texts. A hunk without lines stands behind the line it names.
std::string place(std::size_t begin, std::size_t end) {
  return std::to_string(begin < end ? begin + 1 : begin) +
         (end - begin == 1 ? "" : "," + std::to_string(end - begin));
}

// Appends the changes `begin` up to but not including `end`, with the lines around them.
void write_hunk(const Lines& old, const Lines& current, const Change* begin, const Change* end,
                std::string& out) {
  const Change& last = *std::prev(end);
  const std::size_t lead = std::min(context, begin->old_begin);
  const std::size_t tail = std::min(context, old.size() - last.old_end);
  std::size_t at = begin->old_begin - lead;
  out += "@@ -" + place(at, last.old_end + tail) + " +" +
         place(begin->new_begin - lead, last.new_end + tail) + " @@\n";
  for (const Change* change = begin; change < end; ++change) {
    write_lines(old, at, change->old_begin, ' ', out);
    write_lines(old, change->old_begin, change->old_end, '-', out);
    write_lines(current, change->new_begin, change->new_end, '+', out);
    at = change->old_end;
  }
  write_lines(old, at, last.old_end + tail, ' ', out);
}

}  // namespace

std::string unified_diff(const MapRun& run) {
  const Lines old = split(run.map.lines.text()), current = split(*run.result);
  const std::vector<Change> changes = compare(old, current, run.origins);
  if (changes.empty())
    return "";
  // A tab ends a name, which may have blanks.
  std::string out = "--- " + run.map.path + "\t\n+++ " + run.map.path + "\t(converted)\n";
  const Change* const end = changes.data() + changes.size();
  for (const Change* begin = changes.data(); begin < end;) {
    const Change* next = begin + 1;
    while (next < end && next->old_begin - std::prev(next)->old_end <= 2 * context)
      ++next;
    write_hunk(old, current, begin, next, out);
    begin = next;
  }
  return out;
}
