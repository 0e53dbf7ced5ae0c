// The rules about pairs of templates.
#include "check/edition_templates.h"
#include "check/finding.h"

#include <algorithm>

namespace {

// An output line.
struct Out {
  std::size_t section, distance;  // from the section's first
  std::size_t line;
  const OutputLine& output;
  std::string_view text;  // with its marker

  bool is_dropped() const { return output.marker == Marker::dropped; }
};

std::vector<Out> outputs_of(const NewTemplate& current) {
  std::vector<Out> outputs;
  for (std::size_t s = 0; s < current.newheads.size(); ++s) {
    const auto [begin, end] = output_of(current, s);
    for (std::size_t i = begin; i < end; ++i)
      outputs.push_back({s, i - begin, i, current.output[i], current.lines[i]});
  }
  return outputs;
}

Place count_place(const Template& file, std::size_t head) {
  return {file.filename, head, is_header(file.lines[head]) ? file.lines[head].find('$') + 2 : 0};
}

// What is wrong with the end of an output line; empty if nothing is. A dropped line that is one
// word of the baseline was meant to be written.
std::string marker_fault(const EditionTemplates& edition, const Out& out) {
  const auto text = stripped(out.output.text), word = first_word(text);
  if (out.is_dropped() && edition.shown() && edition.shown()->words.contains(word) &&
      word.size() + 1 == text.size())
    return quote(out.text) + " writes nothing: the markers are \" #\", \"##\" and \" &\"";
  if (!out.is_dropped() && (text.ends_with('#') || text.ends_with(" &")))
    return "only \" #\", \"##\" and \" &\" at the very end are markers: " + quote(text) +
           " is written";
  const bool close = !text.empty() && is_letter(out.output.text.back());
  return out.output.marker == Marker::last_two && close
             ? "there is no blank before \"##\", so a value of two digits follows without one"
             : "";
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
    return "begins with a blank, but no line of the baseline does";
  if (begun.size() > 1)
    return "begins lines of " + quote(*begun.begin()) + " and of " + quote(*begun.rbegin());
  const auto word = first_word(line);
  const auto known = std::ranges::find(baseline.words, lowered(word), lowered);
  return known == baseline.words.end() || baseline.words.contains(word)
             ? ""
             : "has other capital letters than " + quote(*known) + " in the baseline";
}

}  // namespace

// It stands where the names begin to differ: most likely a section is missing or too many there.
void section_count(const EditionTemplates&, const Pair& pair, const Report& report) {
  const auto &old = pair.old.oldheads, &current = pair.current.newheads;
  const auto name_in = [](const Template& file) {
    return [&](std::size_t head) { return section_name(file.lines[head]); };
  };
  const auto differ =
      std::ranges::mismatch(current, old, {}, name_in(pair.current), name_in(pair.old)).in1;
  if (old.size() != current.size())
    report({pair.current.filename, differ == current.end() ? current.back() : *differ},
           "the sections differ from here on: there are " + std::to_string(old.size()) + " in " +
               name_of(pair.old.filename) + ", but " + std::to_string(current.size()) + " here");
}

// A pair of titles and remarks does nothing, which may be meant.
void bad_count(const EditionTemplates&, const Pair& pair, const Report& report) {
  std::size_t i = 1;
  while (is_remark(pair.old.lines[i]))
    ++i;
  for (const Template* file : pair.files()) {
    const bool is_new = file == &pair.current;
    const auto& heads = is_new ? pair.current.newheads : pair.old.oldheads;
    for (std::size_t s = 0; s < heads.size() && i < pair.old.lines.size(); ++s)
      if (!has_number(count_text(file->lines[heads[s]])))
        report(count_place(*file, heads[s]), "there is no count");
      else if (is_new && file->counts[s] < 1)
        report(count_place(*file, heads[s]), "the first map with this section ends the program");
  }
}

void count_past_end(const EditionTemplates&, const Pair& pair, const Report& report) {
  const NewTemplate& current = pair.current;
  for (std::size_t s = 0; s < current.newheads.size(); ++s)
    if (const auto [begin, end] = body_of(current, s);
        std::cmp_greater(current.counts[s], end - begin))
      report(count_place(current, current.newheads[s]),
             s + 1 == current.newheads.size()
                 ? "it runs past the file's end: the first map with this section ends the program"
                 : "it runs past the next header, " + line_number(end) +
                       ", which would be written into maps");
}

// Reports the first line behind a section's output that looks as if it belonged to it.
void count_too_small(const EditionTemplates&, const Pair& pair, const Report& report) {
  const NewTemplate& current = pair.current;
  for (std::size_t s = 0; s < current.newheads.size(); ++s) {
    auto [i, end] = LineRange{output_of(current, s).end, body_of(current, s).end};
    while (i < end && (stripped(current.lines[i]).empty() || is_remark(current.lines[i])))
      ++i;
    if (i < end && current.counts[s] > 0)
      report({current.filename, i}, "this line, behind those that the count of section " +
                                        section_name(current.lines[current.newheads[s]]) +
                                        " covers, is never written (a remark begins with \"=\")");
  }
}

void empty_line(const EditionTemplates&, const Pair& pair, const Report& report) {
  for (std::size_t i = 1; i < pair.old.lines.size(); ++i)
    if (pair.old.lines[i].empty())
      return report({pair.old.filename, i}, "an empty line recognises every line of a map");
}

// In the fix pass the first of three lines decides: the other two may be those of other sections.
void shadowed(const EditionTemplates& edition, const Pair& pair, const Report& report) {
  const OldTemplate& old = pair.old;
  for (std::size_t i = 1; i < old.lines.size() && &pair != edition.fix(); ++i)
    if (const std::size_t t = matchline(old, old.lines[i]);
        recognises(old, i) && !old.lines[t].empty() && sectionof(old, t) != sectionof(old, i))
      report({old.filename, i}, "it never wins: " + line_number(t) + ", " + quote(old.lines[t]) +
                                    ", recognises the same lines, and the last match wins");
}

void odd_recognition(const EditionTemplates& edition, const Pair& pair, const Report& report) {
  const OldTemplate& old = pair.old;
  std::map<std::size_t, std::size_t> counts;  // of the recognition lines of each section
  for (std::size_t i = 1; i < old.lines.size(); ++i) {
    if (!recognises(old, i))
      continue;
    ++counts[sectionof(old, i)];
    const auto oddity = edition.shown() ? oddity_of(*edition.shown(), old.lines[i]) : "";
    if (!oddity.empty())
      report({old.filename, i}, quote(old.lines[i]) + " " + oddity);
  }
  for (const auto& [section, count] : counts)
    if (count < 3 && &pair == edition.fix())
      report({old.filename, old.oldheads[section]},
             "three lines have to be recognised, but the section has only " +
                 counted(count, "recognition line"));
}

void dead_marker(const EditionTemplates& edition, const Pair& pair, const Report& report) {
  std::optional<std::size_t> rest;  // the section of the last " &"
  for (const Out& out : outputs_of(pair.current)) {
    std::string fault = marker_fault(edition, out);
    if (out.output.marker == Marker::rest && std::exchange(rest, out.section) == out.section)
      fault = "every \" &\" copies from the block's first line, and there is another before";
    if (!fault.empty())
      report({pair.current.filename, out.line, out.text.find_last_not_of("#& \t") + 2}, fault);
  }
}

void value_behind(const EditionTemplates&, const Pair& pair, const Report& report) {
  for (const auto& [section, distance, line, output, text] : outputs_of(pair.current))
    if (is_aligned(output.marker) && distance > 0 && section < pair.old.counts.size() &&
        std::cmp_greater_equal(distance, pair.old.counts[section]))
      report({pair.current.filename, line, output.text.size() + 1},
             quote(text) + " takes its value from behind the block");
}

// Of what the expansion's first pass writes, the words alone can be known.
void unknown_output(const EditionTemplates& edition, const Pair& pair, const Report& report) {
  const Baseline* shown = edition.shown();
  std::set<std::string_view> words;
  for (std::size_t i = 1; edition.fix() && i < edition.fix()->old.lines.size(); ++i)
    words.insert(first_word(edition.fix()->old.lines[i]));
  for (const Out& out : outputs_of(pair.current)) {
    const auto word = first_word(out.text);
    if (shown && !out.is_dropped() &&
        (edition.is_last(pair) ? shown->kinds(out.output).empty()
                               : !words.contains(word) && !shown->words.contains(word)))
      report({pair.current.filename, out.line},
             quote(out.text) + " begins like no line of the baseline");
  }
}

// Lines of which the baseline knows nothing, and dropped ones, are left out.
void output_order(const EditionTemplates& edition, const Pair& pair, const Report& report) {
  const Baseline* shown = edition.is_last(pair) ? edition.shown() : nullptr;
  std::vector<std::size_t> before;
  std::string_view last;
  for (const Out& out : outputs_of(pair.current)) {
    if (out.distance == 0)
      before.clear();
    auto kinds = shown ? shown->kinds(out.output) : std::vector<std::size_t>();
    if (out.is_dropped() || kinds.empty())
      continue;
    const auto follows = [&](std::size_t b) {
      return std::ranges::any_of(before, [&](std::size_t a) { return shown->follows(a, b); });
    };
    if (!before.empty() && std::ranges::none_of(kinds, follows))
      report({pair.current.filename, out.line}, quote(out.text) + " does not follow " +
                                                    quote(last) + " in the baseline" +
                                                    shown->missing(before[0], kinds[0]));
    before = std::move(kinds);
    last = out.text;
  }
}
