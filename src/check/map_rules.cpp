// The rules about the conversion of maps.
#include "check/finding.h"
#include "check/map_run.h"
#include "check/sections.h"

#include <algorithm>

namespace {

// A value that an output line copies.
struct Copy {
  const Pass& pass;
  const Block& block;
  const Written& written;
  const OutputLine& output;
  std::string_view text;   // the line of the new template
  std::string_view input;  // the line that the value is taken from
};

std::vector<Copy> copies_of(const MapRun& run) {
  std::vector<Copy> copies;
  for (const Pass& pass : run.passes)
    for (const Written& w : pass.written)
      if (const OutputLine& output = pass.pair.current.output[w.output];
          output.marker == Marker::rest || is_aligned(output.marker))
        copies.push_back({pass, pass.blocks[w.block], w, output, pass.pair.current.lines[w.output],
                          pass.input[w.line]});
  return copies;
}

Place place_of(const MapRun& run, const Pass& pass, std::size_t line) {
  return {run.map.path, pass.origins[std::min(line, pass.origins.size() - 1)].line};
}

void report_copy(const MapRun& run, const Copy& copy, const Report& report, std::string text) {
  report({copy.pass.pair.current.filename, copy.written.output}, std::move(text),
         place_of(run, copy.pass, copy.written.line));
}

// Calls `visit` with each block and its pass.
template <class Visit> void for_each_block(const MapRun& run, const Visit& visit) {
  for (const Pass& pass : run.passes)
    for (const Block& block : pass.blocks)
      visit(pass, block);
}

void report_block(const MapRun& run, const Pass& pass, const Block& block, std::size_t line,
                  const Report& report, const std::string& text) {
  const std::size_t header = pass.header_of(block);
  report({pass.pair.old.filename, header},
         quoted(pass.input[line]) + text + " of section " +
             section_name(pass.pair.old.lines[header]),
         place_of(run, pass, line));
}

// Where the marker of an output line begins to copy.
std::size_t copied_from(const Copy& copy) {
  const std::size_t size = copy.input.size();
  if (copy.output.marker == Marker::rest)
    return std::min(size, copy.output.text.size() - 1);
  return size - std::min<std::size_t>(copy.output.marker == Marker::last_two ? 2 : 1, size);
}

// Whether the copy loses a part of the value in its line, or doubles the blank before it.
bool misses_value(const Copy& copy) {
  const auto line = copy.input;
  const std::size_t at = copied_from(copy);
  const bool rest = copy.output.marker == Marker::rest;
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

bool block_has_word(const Pass& pass, const Block& block, std::string_view word) {
  for (std::size_t k = block.line; k < block.line + block.count; ++k)
    if (first_word(pass.input[k]) == word)
      return true;
  return false;
}

bool output_has_word(const Pass& pass, const Block& block, std::string_view word) {
  for (auto [i, end] = output_of(pass.pair.current, pass.section_of(block)); i < end; ++i)
    if (first_word(pass.pair.current.lines[i]) == word)
      return true;
  return false;
}

bool writes_nothing(const Pass& pass, const Block& block) {
  const auto [begin, end] = output_of(pass.pair.current, pass.section_of(block));
  const OutputLine* first = pass.pair.current.output.data();
  return std::all_of(first + begin, first + end,
                     [](const OutputLine& output) { return output.marker == Marker::dropped; });
}

// What is lost of line `k` in a block; empty if it is written or meant. A line that is dropped in
// its place is meant, and so is one that is recognised with its value. Other lines inside a block
// are lost if current maps, or other sections, have lines of their word.
std::string loss_of(const MapRun& run, const Pass& pass, const Block& block, std::size_t k) {
  const auto [begin, end] = output_of(pass.pair.current, pass.section_of(block));
  const auto line = pass.input[k], word = first_word(line);
  const std::size_t i = std::min(begin + (k - block.line), end - 1);
  const OutputLine& output = pass.pair.current.output[i];
  const bool aligned = i - begin == k - block.line, written = output_has_word(pass, block, word);
  if (word.empty() || (aligned && output.marker == Marker::dropped) ||
      (k == block.line && pass.pair.old.lines[block.recognised_by].size() >= line.size()))
    return "";
  const auto value = value_in(line), constant = value_in(output.text);
  if (aligned && output.marker == Marker::none && !value.empty() && !constant.empty() &&
      value != constant && (first_word(output.text) == word || !written))
    return " loses its value, as " + quoted(output.text) + " is written, in a block";
  if (aligned && output.marker != Marker::none)
    return "";
  const std::size_t t = pass.is_fix ? 0 : matchline(pass.pair.old, line);
  const bool kept = run.edition.shown() && run.edition.shown()->has_word(word);
  return k > block.line && !written && (kept || recognises(pass.pair.old, t))
             ? " is lost in a block"
             : "";
}

// Reports a line of the result where the template writes it, or where the map has it.
void report_result(const MapRun& run, std::size_t j, const std::string& key, std::string text,
                   const Report& report) {
  const auto& [line, writer, output] = run.origins[j];
  const Place seen{run.map.path, line};
  report(writer ? Place{writer->current.filename, output} : seen, std::move(text), seen,
         writer ? "" : key);
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
                    quoted(line) + " begins like no line of the baseline", report);
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
                    quoted(run.lines[j]) + " does not follow " + quoted(run.lines[j - 1]) +
                        " in the baseline" + missing,
                    report);
  }
}

void cut_value(const MapRun& run, const Report& report) {
  for (const Copy& copy : copies_of(run))
    if (misses_value(copy))
      report_copy(run, copy, report,
                  quoted(copy.text) + " copies " + quoted(copy.input.substr(copied_from(copy))) +
                      " of " + quoted(copy.input));
}

// The line of the value begins with another word, and that one or the output's is at home elsewhere
// in the block: the line has not only been renamed.
void other_value(const MapRun& run, const Report& report) {
  for (const Copy& copy : copies_of(run)) {
    const auto word = first_word(copy.text), taken = first_word(copy.input);
    const auto& [pass, block, written, output, text, input] = copy;
    if (word != taken && !word.empty() && !taken.empty() &&
        written.line < block.line + block.count &&
        (block_has_word(pass, block, word) || output_has_word(pass, block, taken)))
      report_copy(run, copy, report, quoted(text) + " takes its value from " + quoted(input));
  }
}

// The version line is to lose its value, and a section that writes nothing is to lose all.
void lost_line(const MapRun& run, const Report& report) {
  for_each_block(run, [&](const Pass& pass, const Block& block) {
    if (writes_nothing(pass, block))
      return;
    for (std::size_t k = block.line; k < block.line + block.count; ++k)
      if (const std::string loss = loss_of(run, pass, block, k);
          !loss.empty() && pass.origins[k].line != 1)
        report_block(run, pass, block, k, report, loss);
  });
}

// The output ends in a fixed line, and the map has that line right behind the block.
void stays_behind(const MapRun& run, const Report& report) {
  for_each_block(run, [&](const Pass& pass, const Block& block) {
    const std::size_t after = block.line + block.count,
                      end = output_of(pass.pair.current, pass.section_of(block)).end;
    const auto last = unindented(pass.pair.current.lines[end - 1]);
    if (block.count > 0 && pass.pair.current.output[end - 1].marker == Marker::none &&
        !last.empty() && unindented(pass.input[after]) == last &&
        unindented(pass.input[after - 1]) != last)
      report_block(run, pass, block, after, report, " stays behind a block");
  });
}

void past_map_end(const MapRun& run, const Report& report) {
  for_each_block(run, [&](const Pass& pass, const Block& block) {
    if (pass.pair.old.counts[pass.section_of(block)] >
        static_cast<long long>(pass.input.size() - block.line))
      report_block(run, pass, block, block.line, report, ", near the map's end, begins a block");
  });
}
