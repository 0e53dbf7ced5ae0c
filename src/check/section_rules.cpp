// The rules about sections and their counts.
#include "check/sections.h"
#include "check/template_rules.h"
#include "engine/numbers.h"

#include <algorithm>
#include <cmath>

namespace {

template <class Kind> std::vector<std::string> section_names(const Kind& file) {
  std::vector<std::string> names;
  for (std::size_t s = 0; s < file.counts.size(); ++s)
    names.push_back(section_name(file, s));
  return names;
}

// Where the names of the sections begin to differ: most likely one is missing or too many there.
std::size_t first_difference(const Pair& pair) {
  const auto old_names = section_names(pair.old);
  const auto new_names = section_names(pair.current);
  const auto [old, current] =
      std::mismatch(old_names.begin(), old_names.end(), new_names.begin(), new_names.end());
  const auto s = static_cast<std::size_t>(current - new_names.begin());
  return pair.current.newheads[std::min(s, new_names.size() - 1)];
}

void check_count(const Template& file, std::size_t head, bool is_new, Findings& findings) {
  constexpr const char* rule = "bad-count";
  const auto text = count_text(file.lines[head]);
  const double value = numeric_value(text);
  const auto count = whole_part(value);
  if (!has_number(text))
    return findings.error(
        rule, file.filename, head,
        is_header(file.lines[head])
            ? "there is no count after the \"$\""
            : "the file has no header, and this line does not begin with a count");
  if (is_new && count <= 0)
    findings.error(rule, file.filename, head,
                   "the count is below 1: the first map with this section ends the program");
  else if (value < 0)
    findings.warning(rule, file.filename, head, "a count below 0 means the same as 0");
  else if (value != std::trunc(value))
    findings.warning(rule, file.filename, head,
                     "the count is a fraction, of which " + std::to_string(count) + " is used");
}

// Reports the first line behind a section's output that looks as if it belonged to it.
void check_rest(const NewTemplate& current, std::size_t s, Findings& findings) {
  const Lines body = body_of(current, s), output = output_of(current, s);
  for (std::size_t i = output.end; i < body.end && current.counts[s] > 0; ++i)
    if (!stripped(current.lines[i]).empty() && !is_remark(current.lines[i]))
      return findings.warning(
          "count-too-small", current.filename, i,
          "this line is behind the " + counted(output.end - output.begin, "line") + " of section " +
              section_name(current, s) + " and is never written (a remark begins with \"=\")");
}

}  // namespace

void section_count(const Edition&, const Pair& pair, Findings& findings) {
  const std::size_t old = pair.old.oldheads.size(), current = pair.current.newheads.size();
  if (old != current)
    findings.error("section-count", pair.current.filename, first_difference(pair),
                   "the sections differ from here on: there are " + std::to_string(old) + " in " +
                       name_of(pair.old.filename) + ", but " + std::to_string(current) +
                       " in this file");
}

void section_order(const Edition&, const Pair& pair, Findings& findings) {
  auto old_names = section_names(pair.old);
  auto new_names = section_names(pair.current);
  const std::size_t first = first_difference(pair);
  const bool same = old_names == new_names;
  std::sort(old_names.begin(), old_names.end());
  std::sort(new_names.begin(), new_names.end());
  if (!same && old_names == new_names)
    findings.warning("section-order", pair.current.filename, first,
                     "the sections have the same names as in " + name_of(pair.old.filename) +
                         " in another order, but only their order counts");
}

void count_past_end(const Edition&, const Pair& pair, Findings& findings) {
  const NewTemplate& current = pair.current;
  for (std::size_t s = 0; s < current.newheads.size(); ++s) {
    const auto [begin, end] = body_of(current, s);
    if (current.counts[s] <= static_cast<long long>(end - begin))
      continue;
    const bool last = s + 1 == current.newheads.size();
    findings.error("count-past-end", current.filename, current.newheads[s],
                   "the count of " + std::to_string(current.counts[s]) + " runs past " +
                       (last ? "the file's end: the first map with this section ends the program"
                             : "the next header, " + line_number(end) +
                                   ": that header would be written into maps"));
  }
}

void count_too_small(const Edition&, const Pair& pair, Findings& findings) {
  for (std::size_t s = 0; s < pair.current.newheads.size(); ++s)
    check_rest(pair.current, s, findings);
}

void bad_count(const Edition&, const Pair& pair, Findings& findings) {
  for (const std::size_t head : pair.old.oldheads)
    check_count(pair.old, head, false, findings);
  for (const std::size_t head : pair.current.newheads)
    check_count(pair.current, head, true, findings);
}
