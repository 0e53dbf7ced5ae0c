// The rules about recognition lines and about the markers of output lines.
#include "check/sections.h"
#include "check/template_rules.h"

#include <algorithm>

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

// Whether a dropped line was likely meant to be written: the current format has such a line or,
// where the baseline shows no map, it is one word, as before a value.
bool is_meant(const Edition& edition, std::string_view dropped) {
  const auto text = stripped(dropped.substr(0, dropped.find_last_not_of("#&") + 1));
  if (text.empty())
    return false;
  if (!edition.baseline_lines || edition.baseline_lines->size() <= 2)
    return text.find_first_of(" \t") == text.npos;
  for (std::size_t i = 0; i < edition.baseline_lines->size(); ++i)
    if (unindented((*edition.baseline_lines)[i]).starts_with(text))
      return true;
  return false;
}

// What is wrong with an output line that ends in a marker or nearly so; empty if nothing is.
std::string fault_of(const Edition& edition, const NewTemplate& current, std::size_t i) {
  const OutputLine& output = current.output[i];
  const auto line = current.lines[i];
  const auto without_end = line.substr(0, line.find_last_not_of(" \t") + 1);
  const bool has_end = without_end.size() < line.size();
  if (output.marker == Marker::dropped && is_meant(edition, line))
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

// How many characters of a value the " &" of an output line loses behind recognition line `known`.
// Where that ends in a blank or a quotation mark, the value begins there.
std::size_t lost(const OutputLine& output, std::string_view known) {
  const std::size_t start = output.text.size() - 1;
  const std::size_t value = known.size() - (known.ends_with('"') ? 1 : 0);
  const bool sure = known.ends_with('"') || known.ends_with(' ') || known.ends_with('\t');
  return sure && start > value ? start - value : 0;
}

// Reports the " &" of a section that lose characters behind recognition line `known`.
void check_rest_markers(const Pair& pair, std::size_t known, Findings& findings) {
  const auto [begin, end] = output_of(pair.current, sectionof(pair.old, known));
  for (std::size_t i = begin; i < end; ++i) {
    const OutputLine& output = pair.current.output[i];
    const std::size_t count =
        output.marker == Marker::rest ? lost(output, pair.old.lines[known]) : 0;
    if (count > 0)
      findings.warning("dead-marker", pair.current.filename, i,
                       "the \" &\" loses " + counted(count, "character") +
                           " at the start of the value behind " + quoted(pair.old.lines[known]));
  }
}

// The recognition lines of a template without their indentation.
struct Unindented {
  explicit Unindented(const OldTemplate& old) {
    std::vector<std::string_view> texts{""};
    for (std::size_t i = 0; i < old.lines.size(); ++i)
      if (recognises(old, i) && !unindented(old.lines[i]).empty()) {
        texts.push_back(unindented(old.lines[i]));
        lines.push_back(i);
      }
    index = PrefixIndex(texts);
  }

  // The last recognition line that a line begins with; 0 when there is none.
  std::size_t find(std::string_view line) const { return lines[index.find(unindented(line))]; }

  PrefixIndex index;
  std::vector<std::size_t> lines{0};
};

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

void shadowed(const Edition&, const Pair& pair, Findings& findings) {
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
    if (sectionof(old, t) != sectionof(old, i))
      findings.error(rule, old.filename, i,
                     "it never wins: " + winner +
                         ", recognises the same lines, and the last match wins");
    else
      findings.warning(rule, old.filename, i, "it is not needed besides " + winner);
  }
}

void dead_marker(const Edition& edition, const Pair& pair, Findings& findings) {
  for (std::size_t s = 0; s < pair.current.newheads.size(); ++s) {
    const auto [begin, end] = output_of(pair.current, s);
    for (std::size_t i = begin; i < end; ++i)
      if (const std::string fault = fault_of(edition, pair.current, i); !fault.empty())
        findings.warning("dead-marker", pair.current.filename, i, fault);
  }
  for (std::size_t i = 0; i < pair.old.lines.size(); ++i)
    if (recognises(pair.old, i))
      check_rest_markers(pair, i, findings);
}

// The lines of a block are known by the output lines that take a value from them or leave one out.
void block_overlap(const Edition&, const Pair& pair, Findings& findings) {
  const Unindented known(pair.old);
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
