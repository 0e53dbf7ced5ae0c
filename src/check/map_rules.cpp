// The rules about the conversion of maps.
#include "check/finding.h"
#include "check/map_run.h"

#include <algorithm>

namespace {

Place place_of(const MapRun& run, const Pass& pass, std::size_t line) {
  return {run.map.path, pass.origins[std::min(line, pass.origins.size() - 1)].line};
}

// Calls `visit` with each block and its pass.
template <class Visit> void for_each_block(const MapRun& run, const Visit& visit) {
  for (const Pass& pass : run.passes)
    for (const Block& block : pass.blocks)
      visit(pass, block);
}

// A value that an output line copies.
struct Copy {
  const Pass& pass;
  const Block& block;
  std::size_t line, source;  // of the new template, and of the map
  const OutputLine& output;
  std::string_view text, input;  // these lines

  // Where the copy begins in the map's line.
  std::size_t begin() const {
    if (output.marker == Marker::rest)
      return std::min(input.size(), output.text.size() - 1);
    return input.size() -
           std::min<std::size_t>(output.marker == Marker::last_two ? 2 : 1, input.size());
  }
};

// Calls `visit` with each value that is copied; it returns what is wrong, empty if nothing is.
template <class Visit>
void report_copies(const MapRun& run, const Report& report, const Visit& visit) {
  for_each_block(run, [&](const Pass& pass, const Block& block) {
    const NewTemplate& current = pass.pair.current;
    for (auto [i, end] = pass.output_of(block); i < end; ++i) {
      const OutputLine& output = current.output[i];
      if (output.marker != Marker::rest && !is_aligned(output.marker))
        continue;
      const std::size_t k = pass.source_of(block, i);
      const std::string fault =
          visit(Copy{pass, block, i, k, output, current.lines[i], pass.input[k]});
      if (!fault.empty())
        report({current.filename, i}, quote(current.lines[i]) + fault, place_of(run, pass, k));
    }
  });
}

void report_block(const MapRun& run, const Pass& pass, const Block& block, std::size_t line,
                  const Report& report, const std::string& text) {
  const std::size_t header = pass.header_of(block);
  report({pass.pair.old.filename, header},
         quote(pass.input[line]) + text + " of section " +
             section_name(pass.pair.old.lines[header]),
         place_of(run, pass, line));
}

// Whether the copy loses a part of the value in its line, or doubles the blank before it.
bool misses_value(const Copy& copy) {
  const auto line = copy.input;
  const std::size_t at = copy.begin();
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

// Whether one of the lines begins with a word.
bool has_word(const LineArray& lines, LineRange range, std::string_view word) {
  for (std::size_t i = range.begin; i < range.end; ++i)
    if (first_word(lines[i]) == word)
      return true;
  return false;
}

bool writes_nothing(const Pass& pass, const Block& block) {
  auto [i, end] = pass.output_of(block);
  while (i < end && pass.pair.current.output[i].marker == Marker::dropped)
    ++i;
  return i == end;
}

// What is lost of line `k` in a block; empty if it is written or meant. A line that is dropped in
// its place is meant, and so is one that is recognised with its value. Another line inside a block
// is lost if it is less indented than the first, or if current maps, or other sections, have lines
// of its word and the section is not one that writes nothing.
std::string loss_of(const MapRun& run, const Pass& pass, const Block& block, std::size_t k) {
  const auto [begin, end] = pass.output_of(block);
  const auto line = pass.input[k], word = first_word(line);
  const std::size_t i = std::min(begin + (k - block.line), end - 1);
  const OutputLine& output = pass.pair.current.output[i];
  const bool aligned = i - begin == k - block.line,
             written = has_word(pass.pair.current.lines, {begin, end}, word);
  if (word.empty() || (aligned && output.marker == Marker::dropped) ||
      (k == block.line && pass.pair.old.lines[block.recognised_by].size() >= line.size()))
    return "";
  const auto value = value_in(line), constant = value_in(output.text);
  if (aligned && output.marker == Marker::none && !value.empty() && !constant.empty() &&
      value != constant && (first_word(output.text) == word || !written))
    return " loses its value, as " + quote(output.text) + " is written, in a block";
  if (aligned && output.marker != Marker::none)
    return "";
  const std::size_t t = pass.is_fix ? 0 : matchline(pass.pair.old, line);
  const bool kept = run.edition.shown() && run.edition.shown()->has_word(word);
  const bool outdented = depth(line) < depth(pass.input[block.line]);
  return k > block.line && !written &&
                 (outdented ||
                  (!writes_nothing(pass, block) && (kept || recognises(pass.pair.old, t))))
             ? " is lost in a block"
             : "";
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
  report_copies(run, report, [](const Copy& copy) {
    return misses_value(copy)
               ? " copies " + quote(copy.input.substr(copy.begin())) + " of " + quote(copy.input)
               : "";
  });
}

// The line of the value begins with another word, and that one or the output's is at home elsewhere
// in the block: the line has not only been renamed.
void other_value(const MapRun& run, const Report& report) {
  report_copies(run, report, [](const Copy& copy) {
    const auto& [pass, block, line, source, output, text, input] = copy;
    const auto word = first_word(text), taken = first_word(input);
    const LineRange lines{block.line, block.line + block.count};
    const bool other = word != taken && !word.empty() && !taken.empty() && source < lines.end &&
                       (has_word(pass.input, lines, word) ||
                        has_word(pass.pair.current.lines, pass.output_of(block), taken));
    return other ? " takes its value from " + quote(input) : "";
  });
}

// The version line is to lose its value.
void lost_line(const MapRun& run, const Report& report) {
  for_each_block(run, [&](const Pass& pass, const Block& block) {
    for (std::size_t k = block.line; k < block.line + block.count; ++k)
      if (pass.origins[k].line != 1)
        if (const auto loss = loss_of(run, pass, block, k); !loss.empty())
          report_block(run, pass, block, k, report, loss);
  });
}

// The output ends in a fixed line, and the map has that line right behind the block.
void stays_behind(const MapRun& run, const Report& report) {
  for_each_block(run, [&](const Pass& pass, const Block& block) {
    const std::size_t after = block.line + block.count, end = pass.output_of(block).end;
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
