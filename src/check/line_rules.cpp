// The rules about recognition lines and about the markers of output lines.
#include "check/sections.h"
#include "check/template_rules.h"

#include <algorithm>
#include <map>
#include <set>

namespace {

// Whether an output line of the new template begins with the title of the old one, which then
// looks like a recognition line that stands too high.
bool is_output(const NewTemplate& current, std::string_view title) {
  for (std::size_t s = 0; s < current.newheads.size() && !title.empty(); ++s) {
    const auto [begin, end] = output_of(current, s);
    for (std::size_t i = begin; i < end; ++i)
      if (unindented(current.lines[i]).starts_with(title))
        return true;
  }
  return false;
}

// The lines of the baseline without their indentation, sorted, if it shows a map.
std::vector<std::string_view> shown_map(const Edition& edition) {
  std::vector<std::string_view> lines;
  const std::size_t size = edition.baseline_lines ? edition.baseline_lines->size() : 0;
  for (std::size_t i = 0; i < size && size > 2; ++i)
    lines.push_back(unindented((*edition.baseline_lines)[i]));
  std::sort(lines.begin(), lines.end());
  return lines;
}

// Whether a dropped line was likely meant to be written: current maps have such a line or, where
// none is shown, it is one word, as before a value.
bool is_meant(const std::vector<std::string_view>& shown, std::string_view dropped) {
  const auto text = stripped(dropped.substr(0, dropped.find_last_not_of("#&") + 1));
  const auto like = std::lower_bound(shown.begin(), shown.end(), text);
  if (text.empty() || shown.empty())
    return !text.empty() && text.find_first_of(" \t") == text.npos;
  return like != shown.end() && like->starts_with(text);
}

// What is wrong with an output line that ends in a marker or nearly so; empty if nothing is.
std::string fault_of(const std::vector<std::string_view>& shown, const NewTemplate& current,
                     std::size_t i) {
  const OutputLine& output = current.output[i];
  const auto line = current.lines[i];
  const auto without_end = line.substr(0, line.find_last_not_of(" \t") + 1);
  const bool has_end = without_end.size() < line.size();
  if (output.marker == Marker::dropped && is_meant(shown, line))
    return quoted(line) + " writes nothing: the markers are \" #\", \"##\" and \" &\"";
  if (output.marker == Marker::last_two && output.text.ends_with('#'))
    return "only the last two \"#\" are a marker, those before them are written into maps";
  if (output.marker == Marker::last_two && !output.text.empty() && is_letter(output.text.back()))
    return "there is no blank before \"##\", so a value of two digits follows without one";
  if (output.marker == Marker::none && has_end &&
      (without_end.ends_with(" #") || without_end.ends_with("##") || without_end.ends_with(" &")))
    return "a blank follows the marker, so the marker itself is written into maps";
  return "";
}

// Where the values of the sections begin, and behind which recognition line: this is known where a
// section's first one ends in a blank or in the quotation mark of the value.
struct Value {
  std::size_t begin, line;
};

std::map<std::size_t, Value> first_values(const OldTemplate& old) {
  std::map<std::size_t, Value> values;
  std::set<std::size_t> seen;
  for (std::size_t i = 0; i < old.lines.size(); ++i) {
    const auto line = old.lines[i];
    if (!recognises(old, i) || !seen.insert(sectionof(old, i)).second)
      continue;
    if (line.ends_with('"') || is_blank(line.back()))
      values[sectionof(old, i)] = {line.size() - (line.ends_with('"') ? 1 : 0), i};
  }
  return values;
}

// Reports the " &" of a section that lose a part of `value`, or double the blank before it.
void check_rest_markers(const Pair& pair, std::size_t s, const Value& value, Findings& findings) {
  const auto [begin, end] = output_of(pair.current, s);
  const auto known = pair.old.lines[value.line];
  for (std::size_t i = begin; i < end; ++i) {
    if (pair.current.output[i].marker != Marker::rest)
      continue;
    const std::size_t start = pair.current.output[i].text.size() - 1;
    if (start > value.begin)
      findings.warning("dead-marker", pair.current.filename, i,
                       "the \" &\" loses " + counted(start - value.begin, "character") +
                           " at the start of the value behind " + quoted(known));
    else if (start < value.begin && is_blank(known[start]))
      findings.warning("dead-marker", pair.current.filename, i,
                       "the \" &\" copies the blank before the value, too, behind " +
                           quoted(known));
  }
}

}  // namespace

void empty_line(const Edition&, const Pair& pair, Findings& findings) {
  std::size_t first = 0, count = 0;
  for (std::size_t i = 1; i < pair.old.lines.size(); ++i)
    if (pair.old.lines[i].empty() && count++ == 0)
      first = i;
  if (count > 0)
    findings.error("empty-line", pair.old.filename, first,
                   "an empty line recognises every line of a map (" + counted(count, "empty line") +
                       " in the file)");
}

// In the fix pass the first of three lines decides: the other two may be those of other sections.
void shadowed(const Edition& edition, const Pair& pair, Findings& findings) {
  constexpr const char* rule = "shadowed";
  const OldTemplate& old = pair.old;
  const auto title = old.lines[0];
  if (!is_header(title) && !is_remark(title) && is_output(pair.current, unindented(title)))
    findings.warning(rule, old.filename, 0,
                     "the first line of an old template is its title and recognises nothing");
  for (std::size_t i = 1; i < old.lines.size(); ++i) {
    const std::size_t t = matchline(old, old.lines[i]);
    if (!recognises(old, i) || t == i || old.lines[t].empty())
      continue;
    const std::string winner = line_number(t) + ", " + quoted(old.lines[t]);
    if (sectionof(old, t) != sectionof(old, i) && &pair != edition.fix())
      findings.error(rule, old.filename, i,
                     "it never wins: " + winner +
                         ", recognises the same lines, and the last match wins");
    else
      findings.warning(rule, old.filename, i, "it is not needed besides " + winner);
  }
}

void dead_marker(const Edition& edition, const Pair& pair, Findings& findings) {
  const auto shown = shown_map(edition);
  for (std::size_t s = 0; s < pair.current.newheads.size(); ++s) {
    const auto [begin, end] = output_of(pair.current, s);
    for (std::size_t i = begin; i < end; ++i)
      if (const std::string fault = fault_of(shown, pair.current, i); !fault.empty())
        findings.warning("dead-marker", pair.current.filename, i, fault);
  }
  for (const auto& [s, value] : first_values(pair.old))
    check_rest_markers(pair, s, value, findings);
}

// The lines of a block are known by the output lines that take a value from them or leave one out.
void block_overlap(const Edition& edition, const Pair& pair, Findings& findings) {
  if (&pair == edition.fix())
    return;  // one recognised line starts no block there
  const LooseIndex known(pair.old);
  for (std::size_t s = 0; s < pair.old.oldheads.size(); ++s) {
    const auto [begin, end] = output_of(pair.current, s);
    for (std::size_t i = begin + 1; i < end; ++i) {
      const OutputLine& output = pair.current.output[i];
      const bool in_block = static_cast<long long>(i - begin) < pair.old.counts[s];
      const std::size_t t = output.marker == Marker::none ? 0 : known.find(output.text);
      if (in_block && t > 0 && sectionof(pair.old, t) != s)
        findings.warning("block-overlap", pair.old.filename, pair.old.oldheads[s],
                         "section " + section_name(pair.old, s) + " includes a line like " +
                             quoted(pair.old.lines[t]) + ", which " + line_number(t) +
                             " does not recognise there");
    }
  }
}
