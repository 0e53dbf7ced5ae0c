// The difference between a map and its conversion.
//
// The lines that the passes copied are known to be equal. So only the lines between them are
// compared, which are few, and the time grows with the map alone.
#include "check/unified_diff.h"

#include <algorithm>

namespace {

constexpr std::size_t context = 3;
constexpr std::size_t largest_table = 4'000'000;  // of lines compared with lines

// The lines of a text with their line ends.
using Lines = std::vector<std::string_view>;

Lines split(std::string_view text) {
  Lines lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(LineArray::line_end), text.size());
    const std::size_t length = std::min(end + LineArray::line_end.size(), text.size());
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

  // Compares the lines up to `i` and `j`, which are equal or the ends of the texts.
  void compare_until(std::size_t i, std::size_t j) {
    while (at_old < i && at_new < j && old[at_old] == current[at_new])
      keep();
    const auto rows = i - at_old, columns = j - at_new;
    if (rows > 0 && columns > 0 && rows <= largest_table / columns)
      compare_all(i, j);
    change(i, j);
  }

  // An equal line.
  void keep() {
    ++at_old;
    ++at_new;
  }

  std::size_t line() const { return at_old; }

  std::vector<Change> changes;

private:
  // Advances to `i` and `j` with all lines on the way changed.
  void change(std::size_t i, std::size_t j) {
    if (at_old == i && at_new == j)
      return;
    if (!changes.empty() && changes.back().old_end == at_old && changes.back().new_end == at_new)
      changes.back() = {changes.back().old_begin, i, changes.back().new_begin, j};
    else
      changes.push_back({at_old, i, at_new, j});
    at_old = i;
    at_new = j;
  }

  // Keeps a longest common subsequence of the lines up to `i` and `j`.
  void compare_all(std::size_t i, std::size_t j) {
    const auto first_old = at_old, first_new = at_new;
    const auto width = j - first_new + 1;
    std::vector<std::uint32_t> longest((i - first_old + 1) * width);
    const auto cell = [&](std::size_t row, std::size_t column) -> std::uint32_t& {
      return longest[(row - first_old) * width + column - first_new];
    };
    for (std::size_t row = i; row-- > first_old;)
      for (std::size_t column = j; column-- > first_new;)
        cell(row, column) = old[row] == current[column]
                                ? cell(row + 1, column + 1) + 1
                                : std::max(cell(row + 1, column), cell(row, column + 1));
    while (at_old < i && at_new < j) {
      if (old[at_old] == current[at_new])
        keep();
      else if (cell(at_old + 1, at_new) >= cell(at_old, at_new + 1))
        change(at_old + 1, at_new);
      else
        change(at_old, at_new + 1);
    }
  }

  const Lines& old;
  const Lines& current;
  std::size_t at_old = 0, at_new = 0;
};

std::vector<Change> compare(const MapRun& run, const Lines& old, const Lines& current) {
  Diff diff(old, current);
  for (std::size_t j = 0; j < current.size() && j < run.origins.size(); ++j) {
    const auto [i, copied] = run.origins[j];
    if (!copied || i < diff.line() || old[i] != current[j])
      continue;
    diff.compare_until(i, j);
    diff.keep();
  }
  diff.compare_until(old.size(), current.size());
  return std::move(diff.changes);
}

// Appends lines, each behind `sign`. A line that has LF in it is several lines here.
void write_lines(const Lines& lines, std::size_t begin, std::size_t end, char sign,
                 std::string& out) {
  for (std::size_t i = begin; i < end; ++i) {
    std::string_view rest = lines[i];
    while (!rest.empty()) {
      const std::size_t length = std::min(rest.find('\n'), rest.size() - 1) + 1;
      out.append(1, sign).append(rest.substr(0, length));
      rest.remove_prefix(length);
    }
    if (!out.ends_with('\n'))
      out += "\n\\ No newline at end of file\n";
  }
}

// Counts lines as `write_lines` does.
std::size_t count_lines(const Lines& lines, std::size_t begin, std::size_t end) {
  std::size_t count = 0;
  for (std::size_t i = begin; i < end; ++i)
    count += static_cast<std::size_t>(std::count(lines[i].begin(), lines[i].end(), '\n')) +
             (lines[i].ends_with('\n') ? 0 : 1);
  return count;
}

// The place of a hunk in one of the texts: its first line, and how many it has if not one. A hunk
// without lines stands behind the line that it names.
class Place {
public:
  explicit Place(const Lines& lines_in) : lines(lines_in) {}

  std::string of(std::size_t begin, std::size_t end) {
    before += count_lines(lines, last, begin);
    last = begin;
    const std::size_t count = count_lines(lines, begin, end);
    return std::to_string(before + (count > 0 ? 1 : 0)) +
           (count == 1 ? "" : "," + std::to_string(count));
  }

private:
  const Lines& lines;
  std::size_t last = 0, before = 0;  // the line up to which lines are counted, and their number
};

class Writer {
public:
  Writer(const Lines& old_in, const Lines& current_in) : old(old_in), current(current_in) {}

  // Appends the hunk of the changes `begin` up to but not including `end`.
  void write(const Change* begin, const Change* end) {
    const Change& last = *std::prev(end);
    const std::size_t lead = std::min(context, begin->old_begin);
    const std::size_t tail = std::min(context, old.size() - last.old_end);
    std::size_t at = begin->old_begin - lead;
    text += "@@ -" + old_place.of(at, last.old_end + tail) + " +" +
            new_place.of(begin->new_begin - lead, last.new_end + tail) + " @@\n";
    for (const Change* change = begin; change < end; ++change) {
      write_lines(old, at, change->old_begin, ' ', text);
      write_lines(old, change->old_begin, change->old_end, '-', text);
      write_lines(current, change->new_begin, change->new_end, '+', text);
      at = change->old_end;
    }
    write_lines(old, at, last.old_end + tail, ' ', text);
  }

  std::string text;

private:
  const Lines& old;
  const Lines& current;
  Place old_place{old}, new_place{current};
};

}  // namespace

std::string unified_diff(const MapRun& run) {
  const Lines old = split(run.map.lines.text()), current = split(*run.result);
  const std::vector<Change> changes = compare(run, old, current);
  if (changes.empty())
    return "";
  Writer writer(old, current);
  writer.text = "--- " + run.map.path + "\n+++ " + run.map.path + " (converted)\n";
  const Change* const end = changes.data() + changes.size();
  for (const Change* begin = changes.data(); begin < end;) {
    const Change* next = begin + 1;
    while (next < end && next->old_begin - std::prev(next)->old_end <= 2 * context)
      ++next;
    writer.write(begin, next);
    begin = next;
  }
  return std::move(writer.text);
}
