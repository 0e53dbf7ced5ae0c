// The rules about the conversion of maps.
#include "check/finding.h"
#include "check/map_run.h"

#include <algorithm>
#include <ranges>

namespace {

Place place_of(const MapRun& run, const Pass& pass, std::size_t line) {
  return {run.map.path, pass.origins[std::min(line, pass.origins.size() - 1)].line};
}

void report_block(const MapRun& run, const Pass& pass, const Block& block, std::size_t line,
                  const Report& report, const std::string& text) {
  const std::size_t header = pass.header_of(block);
  report({pass.pair.old.filename, header},
         quote(pass.input[line]) + text + " of section " +
             section_name(pass.pair.old.lines[header]),
         place_of(run, pass, line));
}

// Reports what `fault_of` finds, if anything, about the copies of values: it gets the block and its
// pass, the output line and the map's line.
template <class FaultOf>
void report_copies(const MapRun& run, const Report& report, const FaultOf& fault_of) {
  for (const Pass& pass : run.passes)
    for (const Block& block : pass.blocks)
      for (auto [i, end] = pass.output_of(block); i < end; ++i) {
        const NewTemplate& current = pass.pair.current;
        const std::size_t k = pass.source_of(block, i);
        const bool copies = has_value(current.output[i].marker);
        const std::string fault = copies ? fault_of(pass, block, i, k) : "";
        if (!fault.empty())
          report({current.filename, i}, quote(current.lines[i]) + fault, place_of(run, pass, k));
      }
}

// Where the copy begins in the map's line.
std::size_t copy_start(const OutputLine& output, std::string_view line) {
  if (output.marker == Marker::rest)
    return std::min(line.size(), output.text.size() - 1);
  const std::size_t count = output.marker == Marker::last_two ? 2 : 1;
  return line.size() - std::min(count, line.size());
}

// Whether the copy from `at` on loses a part of the value in its line, or doubles the blank before.
bool misses_value(std::string_view line, std::size_t at, bool rest) {
  if (at == line.size())
    return rest && stripped(line).find(' ') != line.npos;
  if (at == 0 || is_blank(line[at - 1]) || (rest && is_blank(line[at])))
    return at > 0 && rest && is_blank(line[at]);
  const char before = line[at - 1], first = line[at];
  const bool in_number = is_digit(first) && (is_digit(before) || before == '.' || before == '-');
  return in_number || (is_letter(first) && is_letter(before)) || (first == '"' && !rest);
}

// What follows the first word of a line.
std::string_view value_in(std::string_view line) {
  return stripped(unindented(line).substr(first_word(line).size()));
}

// Whether one of the lines begins with a word.
bool has_word(const LineArray& lines, LineRange range, std::string_view word) {
  return std::ranges::any_of(std::views::iota(range.begin, range.end),
                             [&](std::size_t i) { return first_word(lines[i]) == word; });
}

// What is lost of line `k` in a block; empty if it is written or meant. A line that is dropped in
// its place is meant, and so is one that is recognised with its value. Another line inside a block
// is lost if it is less indented than the first, or if current maps, or other sections, have lines
// of its word and the section is not one that writes nothing.
std::string loss_of(const MapRun& run, const Pass& pass, const Block& block, std::size_t k) {
  const OldTemplate& old = pass.pair.old;
  const NewTemplate& current = pass.pair.current;
  const LineRange lines = pass.output_of(block);
  const auto line = pass.input[k], word = first_word(line), value = value_in(line);
  const std::size_t i = lines.begin + (k - block.line);
  const OutputLine output = i < lines.end ? current.output[i] : OutputLine{"", Marker::none};
  const bool whole = k == block.line && old.lines[block.recognised_by].size() >= line.size();
  if (word.empty() || has_value(output.marker) || output.marker == Marker::dropped || whole)
    return "";
  const auto constant = value_in(output.text);
  const bool written = has_word(current.lines, lines, word);
  if (!value.empty() && !constant.empty() && value != constant &&
      (first_word(output.text) == word || !written))
    return " loses its value, as " + quote(output.text) + " is written, in a block";
  const bool known = (run.edition.shown() && run.edition.shown()->words.contains(word)) ||
                     (!pass.pair.is_fix && recognises(old, matchline(old, line)));
  const bool outdented = depth(line) < depth(pass.input[block.line]);
  const auto writes = [&](std::size_t at) { return current.output[at].marker != Marker::dropped; };
  const bool any = std::ranges::any_of(std::views::iota(lines.begin, lines.end), writes);
  const bool lost = outdented || (known && any);
  return k > block.line && !written && lost ? " is lost in a block" : "";
}

// Reports a line of the result where the template writes it, or where the map has it.
void report_result(const MapRun& run, std::size_t j, const std::string& key,
                   const std::string& text, const Report& report) {
  const auto& [line, writer, output] = run.origins[j];
  const Place seen{run.map.path, line};
  report(writer ? Place{writer->current.filename, output} : seen, text, seen, writer ? "" : key);
}

}  // namespace

// What templates write was held against the baseline already, unless a value is in it.
void unknown_line(const MapRun& run, const Report& report) {
  for (std::size_t j = 1; run.edition.shown() && j < run.lines.size(); ++j) {
    const auto line = run.lines[j];
    const auto& [from, writer, output] = run.origins[j];
    if (run.edition.shown()->kind(line) == 0 && !unindented(line).empty() &&
        (!writer || !run.edition.is_last(*writer) ||
         writer->current.output[output].marker == Marker::rest))
      report_result(run, j, std::string(line.substr(0, line.find_first_of(" 0123456789"))),
                    quote(line) + " begins like no line of the baseline", report);
  }
}

// Lines that follow each other in the map, too, are as they were: only a missing one is reported.
void line_order(const MapRun& run, const Report& report) {
  const Baseline* shown = run.edition.shown();
  std::size_t b = 0;  // of the first line nothing is asked
  for (std::size_t j = 1; shown && j < run.lines.size(); ++j) {
    const std::size_t a = std::exchange(b, shown->kind(run.lines[j]));
    const auto &before = run.origins[j - 1], &origin = run.origins[j];
    const bool same_block = origin.writer && origin.writer == before.writer &&
                            origin.output > before.output && run.edition.is_last(*origin.writer);
    if (a == 0 || b == 0 || same_block || shown->follows(a, b))
      continue;
    const auto word = [&](std::size_t line) { return first_word(run.map.lines[line]); };
    const std::size_t i = std::max<std::size_t>(origin.line, 1);
    const bool followed =
        word(i - 1) == first_word(run.lines[j - 1]) || (a == b && word(i - 1) == word(i));
    const auto missing = shown->missing(a, b);
    if (!missing.empty() || (!followed && !shown->may_follow(a, b)))
      report_result(run, before.writer ? j - 1 : j, std::to_string(a) + " " + std::to_string(b),
                    quote(run.lines[j]) + " does not follow " + quote(run.lines[j - 1]) +
                        " in the baseline" + missing,
                    report);
  }
}

void cut_value(const MapRun& run, const Report& report) {
  report_copies(run, report, [](const Pass& pass, const Block&, std::size_t i, std::size_t k) {
    const OutputLine& output = pass.pair.current.output[i];
    const auto line = pass.input[k];
    const std::size_t at = copy_start(output, line);
    return misses_value(line, at, output.marker == Marker::rest)
               ? " copies " + quote(line.substr(at)) + " of " + quote(line)
               : "";
  });
}

// The line of the value begins with another word, and that one or the output's is at home elsewhere
// in the block: the line has not only been renamed.
void other_value(const MapRun& run, const Report& report) {
  report_copies(
      run, report, [](const Pass& pass, const Block& block, std::size_t i, std::size_t k) {
        const LineArray& output = pass.pair.current.lines;
        const auto word = first_word(output[i]), taken = first_word(pass.input[k]);
        const LineRange lines{block.line, block.line + block.count};
        const bool at_home =
            has_word(pass.input, lines, word) || has_word(output, pass.output_of(block), taken);
        return word != taken && !word.empty() && !taken.empty() && k < lines.end && at_home
                   ? " takes its value from " + quote(pass.input[k])
                   : "";
      });
}

// The version line is to lose its value.
void lost_line(const MapRun& run, const Report& report) {
  for (const Pass& pass : run.passes)
    for (const Block& block : pass.blocks)
      for (std::size_t k = block.line; k < block.line + block.count; ++k)
        if (const auto loss = loss_of(run, pass, block, k);
            !loss.empty() && pass.origins[k].line != 1)
          report_block(run, pass, block, k, report, loss);
}

void past_map_end(const MapRun& run, const Report& report) {
  for (const Pass& pass : run.passes)
    for (const Block& block : pass.blocks)
      if (std::cmp_greater(pass.pair.old.counts[pass.section_of(block)], block.count))
        report_block(run, pass, block, block.line, report, ", near the map's end, begins a block");
}
