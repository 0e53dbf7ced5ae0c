// The rules about pairs of templates.
#include "check/checker.h"

#include <algorithm>

namespace {

// It stands where the names begin to differ: most likely a section is missing or too many there.
void check_sections(const Pair& pair, Findings& findings) {
  const OldTemplate& old = pair.old;
  const NewTemplate& current = pair.current;
  const std::size_t before = old.oldheads.size(), now = current.newheads.size();
  std::size_t s = 0;
  while (s + 1 < now && s < before &&
         section_name(old, old.oldheads[s]) == section_name(current, current.newheads[s]))
    ++s;
  if (before != now)
    findings.add("section-count", {current.filename, current.newheads[s]},
                 "the sections differ from here on: there are " + std::to_string(before) + " in " +
                     name_of(old.filename) + ", but " + std::to_string(now) + " here");
}

Place count_place(const Template& file, std::size_t head) {
  return {file.filename, head, is_header(file.lines[head]) ? file.lines[head].find('$') + 2 : 0};
}

// A pair of titles and remarks does nothing, which may be meant: no count is missing there.
void check_counts(const Pair& pair, Findings& findings) {
  const NewTemplate& current = pair.current;
  std::size_t first = 1;
  while (is_remark(pair.old.lines[first]))
    ++first;
  const bool does_something = first < pair.old.lines.size();
  const auto lacks_count = [&](const Template& file, std::size_t head) {
    const bool lacks = !has_number(count_text(file.lines[head]));
    if (lacks && does_something)
      findings.add("bad-count", count_place(file, head), "there is no count");
    return lacks;
  };
  for (const std::size_t head : pair.old.oldheads)
    lacks_count(pair.old, head);
  for (std::size_t s = 0; s < current.newheads.size(); ++s) {
    const Place place = count_place(current, current.newheads[s]);
    if (!lacks_count(current, place.line) && current.counts[s] < 1 && does_something)
      findings.add("bad-count", place, "the first map with this section ends the program");
    const LineRange body = body_of(current, s);
    if (std::cmp_greater(current.counts[s], body.size()))
      findings.add(
          "count-past-end", place,
          s + 1 == current.newheads.size()
              ? "it runs past the file's end: the first map with this section ends the program"
              : "it runs past the next header, " + line_number(current.newheads[s + 1]) +
                    ", which would be written into maps");
    std::size_t i = *output_of(current, s).end();  // the first that looks as if it belonged there
    while (i < *body.end() && (stripped(current.lines[i]).empty() || is_remark(current.lines[i])))
      ++i;
    if (i < *body.end() && current.counts[s] > 0)
      findings.add("count-too-small", {current.filename, i},
                   "this line, behind those that the count of section " +
                       section_name(current, place.line) +
                       " covers, is never written (a remark begins with \"=\")");
  }
}

// What is odd about a recognition line, compared with the lines of the baseline; empty if nothing.
// Where it has no indentation, that of the baseline's lines is left out.
std::string oddity_of(const Baseline& baseline, std::string_view line) {
  std::set<std::string_view> begun;  // first words of lines that `line` begins
  for (const std::string_view text : baseline.texts) {
    const auto like = is_blank(line.front()) ? text : unindented(text);
    if (like == line || (like.starts_with(line) && !is_letter(like[line.size()])))
      return "";
    if (like.starts_with(line))
      begun.insert(first_word(text));
  }
  const auto is_spaced = [](std::string_view text) { return text.starts_with(' '); };
  if (is_spaced(line) && std::ranges::none_of(baseline.texts, is_spaced))
    return " begins with a blank, but no line of the baseline does";
  if (begun.size() > 1)
    return " begins lines of " + quote(*begun.begin()) + " and of " + quote(*begun.rbegin());
  const auto word = first_word(line);
  const auto known = std::ranges::find(baseline.words, lowered(word), lowered);
  return known == baseline.words.end() || baseline.words.contains(word)
             ? ""
             : " has other capital letters than " + quote(*known) + " in the baseline";
}

// In the fix pass the first of three lines decides: the other two may be those of other sections.
void check_recognition(const EditionTemplates& edition, const Pair& pair, Findings& findings) {
  const OldTemplate& old = pair.old;
  const bool is_fix = &pair == edition.fix();
  std::map<std::size_t, std::size_t> counts;  // of the recognition lines of each section
  for (std::size_t i = 1; i < old.lines.size(); ++i) {
    const auto line = old.lines[i];
    const Place place{old.filename, i};
    if (line.empty())  // the first one is enough
      findings.add("empty-line", place, "an empty line recognises every line of a map", {},
                   old.filename);
    if (!recognises(old, i))
      continue;
    ++counts[sectionof(old, i)];
    const std::size_t t = matchline(old, line);
    if (!is_fix && !old.lines[t].empty() && sectionof(old, t) != sectionof(old, i))
      findings.add("shadowed", place,
                   "it never wins: " + line_number(t) + ", " + quote(old.lines[t]) +
                       ", recognises the same lines, and the last match wins");
    const auto oddity = edition.shown() ? oddity_of(*edition.shown(), line) : "";
    if (!oddity.empty())
      findings.add("odd-recognition", place, quote(line) + oddity);
  }
  for (const auto& [section, count] : counts)
    if (count < 3 && is_fix)
      findings.add("odd-recognition", {old.filename, old.oldheads[section]},
                   "three lines have to be recognised, but the section has only " +
                       counted(count, "recognition line"));
}

// What is wrong with the end of an output line; empty if nothing is. A dropped line that is one
// word of the baseline was meant to be written.
std::string marker_fault(const Baseline* shown, const OutputLine& output, std::string_view line) {
  const auto text = stripped(output.text), word = first_word(text);
  const bool dropped = output.marker == Marker::dropped;
  if (dropped && shown && shown->words.contains(word) && word.size() + 1 == text.size())
    return quote(line) + " writes nothing: the markers are \" #\", \"##\" and \" &\"";
  if (!dropped && (text.ends_with('#') || text.ends_with(" &")))
    return "only \" #\", \"##\" and \" &\" at the very end are markers: " + quote(text) +
           " is written";
  return output.marker == Marker::last_two && !text.empty() && is_letter(output.text.back())
             ? "there is no blank before \"##\", so a value of two digits follows without one"
             : "";
}

void check_markers(const EditionTemplates& edition, const Pair& pair, Findings& findings) {
  const NewTemplate& current = pair.current;
  for (std::size_t s = 0; s < current.newheads.size(); ++s) {
    const LineRange lines = output_of(current, s);
    bool rest = false;  // whether the section has a " &" so far
    for (const std::size_t i : lines) {
      const OutputLine& output = current.output[i];
      const auto line = current.lines[i];
      const bool again = output.marker == Marker::rest && std::exchange(rest, true);
      const std::string fault =
          again ? "every \" &\" copies from the block's first line, and there is another before"
                : marker_fault(edition.shown(), output, line);
      if (!fault.empty())
        findings.add("dead-marker", {current.filename, i, line.find_last_not_of("#& \t") + 2},
                     fault);
      if (is_aligned(output.marker) && i > lines[0] && s < pair.old.counts.size() &&
          std::cmp_greater_equal(i - lines[0], pair.old.counts[s]))
        findings.add("value-behind", {current.filename, i, output.text.size() + 1},
                     quote(line) + " takes its value from behind the block");
    }
  }
}

// Of what the expansion's first pass writes, the words alone can be known. In the order, lines of
// which the baseline knows nothing, and dropped ones, are left out.
void check_output(const EditionTemplates& edition, const Pair& pair, Findings& findings) {
  const NewTemplate& current = pair.current;
  const Baseline& shown = edition.baseline;
  const bool is_last = edition.is_last(pair);
  std::set<std::string_view> words = shown.words;
  for (std::size_t i = 1; edition.fix() && i < edition.fix()->old.lines.size(); ++i)
    words.insert(first_word(edition.fix()->old.lines[i]));
  for (std::size_t s = 0; s < current.newheads.size(); ++s) {
    std::vector<std::size_t> before;
    std::string_view last;
    for (const std::size_t i : output_of(current, s)) {
      const auto line = current.lines[i];
      auto kinds = shown.kinds(current.output[i]);
      if (current.output[i].marker == Marker::dropped)
        continue;
      if (is_last ? kinds.empty() : !words.contains(first_word(line)))
        findings.add("unknown-line", {current.filename, i},
                     quote(line) + " begins like no line of the baseline");
      if (!is_last || kinds.empty())
        continue;
      const auto follows = [&](std::size_t b) {
        return std::ranges::any_of(before, [&](std::size_t a) { return shown.follows(a, b); });
      };
      if (!before.empty() && std::ranges::none_of(kinds, follows))
        findings.add("output-order", {current.filename, i},
                     quote(line) + " does not follow " + quote(last) + " in the baseline" +
                         shown.missing(before[0], kinds[0]));
      before = std::move(kinds);
      last = line;
    }
  }
}

}  // namespace

void check_pair(const EditionTemplates& edition, const Pair& pair, Findings& findings) {
  check_sections(pair, findings);
  check_counts(pair, findings);
  check_recognition(edition, pair, findings);
  check_markers(edition, pair, findings);
  if (edition.shown())
    check_output(edition, pair, findings);
}
