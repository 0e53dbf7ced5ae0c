// The rules about pairs of templates.
#include "check/finding.h"
#include "check/sections.h"
#include "engine/numbers.h"

#include <algorithm>
#include <functional>

namespace {

std::vector<std::string> section_names(const Template& file,
                                       const std::vector<std::size_t>& heads) {
  std::vector<std::string> names;
  for (const std::size_t head : heads)
    names.push_back(section_name(file.lines[head]));
  return names;
}

// Whether a file has nothing but a title and remarks.
bool is_idle(const Template& file) {
  bool idle = !is_header(file.lines[0]);
  for (std::size_t i = 1; i < file.lines.size(); ++i)
    idle = idle && is_remark(file.lines[i]);
  return idle;
}

Place count_place(const Template& file, std::size_t head) {
  return {file.filename, head, is_header(file.lines[head]) ? file.lines[head].find('$') + 2 : 0};
}

// Calls `visit` with the section and the number of each output line.
void for_each_output(const NewTemplate& current,
                     const std::function<void(std::size_t, std::size_t)>& visit) {
  for (std::size_t s = 0; s < current.newheads.size(); ++s)
    for (auto [i, end] = output_of(current, s); i < end; ++i)
      visit(s, i);
}

// What is wrong with the end of an output line; empty if nothing is. A dropped line that is one
// word of the baseline was meant to be written.
std::string marker_fault(const Edition& edition, const OutputLine& output, std::string_view line) {
  const auto text = stripped(output.text), word = first_word(text);
  const bool sign = text.ends_with('#') || text.ends_with(" &");
  if (output.marker == Marker::dropped)
    return edition.baseline && edition.baseline->has_word(word) && word.size() + 1 == text.size()
               ? quoted(line) + " writes nothing: the markers are \" #\", \"##\" and \" &\""
               : "";
  if (sign)
    return "only \" #\", \"##\" and \" &\" at the very end are markers: " + quoted(output.text) +
           " is written";
  if (output.marker == Marker::last_two && !text.empty() && is_letter(output.text.back()))
    return "there is no blank before \"##\", so a value of two digits follows without one";
  return "";
}

// What is odd about a recognition line, compared with the lines of the baseline; empty if nothing.
std::string oddity_of(const Baseline& baseline, std::string_view line) {
  const auto word = first_word(line);
  const auto begun = baseline.words_like(line);
  if (baseline.words_like(" ").empty() && line.starts_with(' '))
    return "begins with a blank, but no line of the baseline does";
  if (begun.size() > 1)
    return "begins lines of " + quoted(*begun.begin()) + " and of " + quoted(*begun.rbegin());
  for (const std::string& known : baseline.words)
    if (known != word && lowered(known) == lowered(word) && !baseline.has_word(word))
      return "has other capital letters than " + quoted(known) + " in the baseline";
  return "";
}

}  // namespace

// It stands where the names begin to differ: most likely a section is missing or too many there.
void section_count(const Edition&, const Pair& pair, const Report& report) {
  const auto old = section_names(pair.old, pair.old.oldheads);
  const auto current = section_names(pair.current, pair.current.newheads);
  const auto differ = std::ranges::mismatch(old, current).in2 - current.begin();
  const auto s = std::min(static_cast<std::size_t>(differ), current.size() - 1);
  if (old.size() != current.size())
    report({pair.current.filename, pair.current.newheads[s]},
           "the sections differ from here on: there are " + std::to_string(old.size()) + " in " +
               name_of(pair.old.filename) + ", but " + std::to_string(current.size()) +
               " in this file");
}

void section_order(const Edition&, const Pair& pair, const Report& report) {
  const auto old = section_names(pair.old, pair.old.oldheads);
  const auto current = section_names(pair.current, pair.current.newheads);
  for (std::size_t s = 0; s < old.size() && old.size() == current.size(); ++s)
    if (old[s] != current[s] && std::ranges::count(old, current[s]) == 1 &&
        std::ranges::count(current, old[s]) == 1)
      return report({pair.current.filename, pair.current.newheads[s]},
                    "in " + name_of(pair.old.filename) + " the section of this place is " + old[s] +
                        ", and only the order counts");
}

void bad_count(const Edition&, const Pair& pair, const Report& report) {
  if (is_idle(pair.old) && is_idle(pair.current))
    return;  // it does nothing, which may be meant
  const auto check = [&](const Template& file, std::size_t head, bool below_1) {
    const auto line = file.lines[head];
    if (!has_number(count_text(line)))
      report(count_place(file, head), is_header(line) ? "there is no count after the \"$\""
                                                      : "the file has no header, and this line "
                                                        "begins with no count");
    else if (below_1)
      report(count_place(file, head),
             "the count is below 1: the first map with this section ends the program");
  };
  for (const std::size_t head : pair.old.oldheads)
    check(pair.old, head, false);
  for (std::size_t s = 0; s < pair.current.newheads.size(); ++s)
    check(pair.current, pair.current.newheads[s], pair.current.counts[s] < 1);
}

void count_past_end(const Edition&, const Pair& pair, const Report& report) {
  const NewTemplate& current = pair.current;
  for (std::size_t s = 0; s < current.newheads.size(); ++s) {
    const auto [begin, end] = body_of(current, s);
    const bool last = s + 1 == current.newheads.size();
    if (current.counts[s] > static_cast<long long>(end - begin))
      report(count_place(current, current.newheads[s]),
             "the count of " + std::to_string(current.counts[s]) + " runs past " +
                 (last ? "the file's end: the first map with this section ends the program"
                       : "the next header, " + line_number(end) +
                             ": that header would be written into maps"));
  }
}

// Reports the first line behind a section's output that looks as if it belonged to it.
void count_too_small(const Edition&, const Pair& pair, const Report& report) {
  const NewTemplate& current = pair.current;
  for (std::size_t s = 0; s < current.newheads.size(); ++s) {
    const Lines body = body_of(current, s), output = output_of(current, s);
    std::size_t i = output.end;
    while (i < body.end && (stripped(current.lines[i]).empty() || is_remark(current.lines[i])))
      ++i;
    if (i < body.end && current.counts[s] > 0)
      report({current.filename, i},
             "this line is behind the " + counted(output.end - output.begin, "line") +
                 " of section " + section_name(current.lines[current.newheads[s]]) +
                 " and is never written (a remark begins with \"=\")");
  }
}

void empty_line(const Edition&, const Pair& pair, const Report& report) {
  for (std::size_t i = 1; i < pair.old.lines.size(); ++i)
    if (pair.old.lines[i].empty())
      return report({pair.old.filename, i}, "an empty line recognises every line of a map");
}

// In the fix pass the first of three lines decides: the other two may be those of other sections.
void shadowed(const Edition& edition, const Pair& pair, const Report& report) {
  const OldTemplate& old = pair.old;
  for (std::size_t i = 1; i < old.lines.size() && &pair != edition.fix(); ++i)
    if (const std::size_t t = matchline(old, old.lines[i]);
        recognises(old, i) && !old.lines[t].empty() && sectionof(old, t) != sectionof(old, i))
      report({old.filename, i}, "it never wins: " + line_number(t) + ", " + quoted(old.lines[t]) +
                                    ", recognises the same lines, and the last match wins");
}

void odd_recognition(const Edition& edition, const Pair& pair, const Report& report) {
  for (std::size_t i = 1; i < pair.old.lines.size(); ++i)
    if (edition.baseline && edition.baseline->shows_map() && recognises(pair.old, i))
      if (const auto oddity = oddity_of(*edition.baseline, pair.old.lines[i]); !oddity.empty())
        report({pair.old.filename, i}, quoted(pair.old.lines[i]) + " " + oddity);
  std::vector<std::size_t> lines(pair.old.oldheads.size());
  for (std::size_t i = 1; i < pair.old.lines.size(); ++i)
    lines[sectionof(pair.old, i)] += recognises(pair.old, i) ? 1 : 0;
  for (std::size_t s = 0; s < lines.size() && &pair == edition.fix(); ++s)
    if (lines[s] == 1 || lines[s] == 2)
      report(
          {pair.old.filename, pair.old.oldheads[s]},
          "a block of the fix pass begins only where three lines are recognised, but the section "
          "has " +
              counted(lines[s], "recognition line"));
}

void dead_marker(const Edition& edition, const Pair& pair, const Report& report) {
  std::size_t rest = pair.old.oldheads.size();  // the section of the last " &"
  for_each_output(pair.current, [&](std::size_t s, std::size_t i) {
    const auto line = pair.current.lines[i];
    const OutputLine& output = pair.current.output[i];
    std::string fault = marker_fault(edition, output, line);
    if (output.marker == Marker::rest && std::exchange(rest, s) == s)
      fault = "every \" &\" copies from the block's first line, and there is another before";
    if (!fault.empty())
      report({pair.current.filename, i, line.find_last_not_of("#& \t") + 2}, fault);
  });
}

void value_behind(const Edition&, const Pair& pair, const Report& report) {
  for_each_output(pair.current, [&](std::size_t s, std::size_t i) {
    const OutputLine& output = pair.current.output[i];
    const auto d = static_cast<long long>(i - output_of(pair.current, s).begin);
    const bool aligned =
        output.marker == Marker::last_character || output.marker == Marker::last_two;
    if (aligned && d > 0 && s < pair.old.counts.size() && d >= pair.old.counts[s])
      report({pair.current.filename, i, output.text.size() + 1},
             quoted(pair.current.lines[i]) + " takes its value from behind the block, which has " +
                 counted(static_cast<std::size_t>(std::max(pair.old.counts[s], 0LL)), "line"));
  });
}

// Of what the expansion's first pass writes, the words alone can be known.
void unknown_output(const Edition& edition, const Pair& pair, const Report& report) {
  if (!edition.baseline || !edition.baseline->shows_map())
    return;
  std::set<std::string_view> words;
  for (std::size_t i = 1; edition.fix() && i < edition.fix()->old.lines.size(); ++i)
    words.insert(first_word(edition.fix()->old.lines[i]));
  for_each_output(pair.current, [&](std::size_t, std::size_t i) {
    const OutputLine& output = pair.current.output[i];
    const auto word = first_word(output.text);
    const bool known = edition.shows(pair)
                           ? !edition.baseline->kinds(output).empty()
                           : words.contains(word) || edition.baseline->has_word(word);
    if (output.marker != Marker::dropped && !known)
      report({pair.current.filename, i},
             quoted(pair.current.lines[i]) + " begins like no line of the baseline");
  });
}

// Lines of which the baseline knows nothing, and dropped ones, are left out.
void output_order(const Edition& edition, const Pair& pair, const Report& report) {
  if (!edition.shows(pair))
    return;
  std::set<std::size_t> before;
  std::size_t section = 0, last = 0;
  for_each_output(pair.current, [&](std::size_t s, std::size_t i) {
    const OutputLine& output = pair.current.output[i];
    auto kinds = edition.baseline->kinds(output);
    if (output.marker == Marker::dropped || kinds.empty())
      return;
    bool known = s != section || before.empty();
    for (const std::size_t a : before)
      for (const std::size_t b : kinds)
        known = known || edition.baseline->follows(a, b);
    const auto missing = known ? "" : edition.baseline->missing(*before.begin(), *kinds.begin());
    if (!known)
      report({pair.current.filename, i},
             quoted(pair.current.lines[i]) + " does not follow " +
                 quoted(pair.current.lines[last]) + " in the baseline" +
                 (missing.empty() ? "" : ": " + missing + " is missing"));
    before = std::move(kinds);
    section = s;
    last = i;
  });
}
