// The rules about the conversion of maps.
#include "check/checker.h"

#include <algorithm>

namespace {

// Whether the copy from `at` on loses a part of the value in its line, or doubles the blank before.
bool misses_value(std::string_view line, std::size_t at, bool rest) {
  if (at == 0 || at == line.size())
    return at > 0 && rest && stripped(line).find(' ') != line.npos;
  const char before = line[at - 1], first = line[at];
  if (is_blank(before) || is_blank(first))
    return rest && is_blank(first);
  const bool in_number = is_digit(first) && (is_digit(before) || before == '.' || before == '-');
  return in_number || (is_letter(first) && is_letter(before)) || (first == '"' && !rest);
}

// What is wrong with the copy of the value in a map's line; empty if nothing is.
std::string cut_of(const OutputLine& output, std::string_view line) {
  const bool rest = output.marker == Marker::rest;
  const std::size_t count = output.marker == Marker::last_two ? 2 : 1;
  const std::size_t at = rest ? std::min(line.size(), output.text.size() - 1)
                              : line.size() - std::min(count, line.size());
  return misses_value(line, at, rest) ? " copies " + quote(line.substr(at)) + " of " + quote(line)
                                      : "";
}

// What follows the first word of a line.
std::string_view value_in(std::string_view line) {
  return stripped(unindented(line).substr(first_word(line).size()));
}

// Whether one of the lines begins with a word.
bool has_word(const LineArray& lines, LineRange range, std::string_view word) {
  return std::ranges::any_of(range, [&](std::size_t i) { return first_word(lines[i]) == word; });
}

// Whether output line `i` takes its value from line `k` of another word, and that word or the
// output's is at home elsewhere in the block: the line has not only been renamed.
bool is_other_value(const Pass& pass, const Block& block, std::size_t i, std::size_t k) {
  const LineArray& output = pass.pair.current.lines;
  const auto word = first_word(output[i]), taken = first_word(pass.input[k]);
  const LineRange lines{block.line, block.line + block.count};
  return word != taken && !word.empty() && !taken.empty() && k < block.line + block.count &&
         (has_word(pass.input, lines, word) || has_word(output, pass.output_of(block), taken));
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
  const std::size_t d = k - block.line;
  const OutputLine output =
      d < lines.size() ? current.output[lines[d]] : OutputLine{"", Marker::none};
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
  const bool any = std::ranges::any_of(lines, writes);
  const bool lost = outdented || (known && any);
  return k > block.line && !written && lost ? " is lost in a block" : "";
}

void check_block(const MapRun& run, const Pass& pass, const Block& block, Findings& findings) {
  const OldTemplate& old = pass.pair.old;
  const NewTemplate& current = pass.pair.current;
  const auto place_of = [&](std::size_t k) {
    return Place{run.map.path, pass.origins[std::min(k, pass.origins.size() - 1)].line};
  };
  const auto report = [&](KnownRule rule, std::size_t k, const std::string& fault) {
    const std::size_t header = pass.header_of(block);
    findings.add(rule, {old.filename, header},
                 quote(pass.input[k]) + fault + " of section " + section_name(old, header),
                 place_of(k));
  };
  if (std::cmp_greater(old.counts[pass.section_of(block)], block.count))
    report("past-map-end", block.line, ", near the map's end, begins a block");
  for (std::size_t k = block.line; k < block.line + block.count; ++k)
    if (const auto loss = loss_of(run, pass, block, k);
        !loss.empty() && pass.origins[k].line != 1)  // the version line is to lose its value
      report("lost-line", k, loss);
  for (const std::size_t i : pass.output_of(block)) {
    if (!has_value(current.output[i].marker))
      continue;
    const std::size_t k = pass.source_of(block, i);
    const std::string line = quote(current.lines[i]),
                      cut = cut_of(current.output[i], pass.input[k]);
    if (!cut.empty())
      findings.add("cut-value", {current.filename, i}, line + cut, place_of(k));
    if (is_other_value(pass, block, i, k))
      findings.add("other-value", {current.filename, i},
                   line + " takes its value from " + quote(pass.input[k]), place_of(k));
  }
}

// What templates write was held against the baseline already, unless a value is in it. Lines that
// follow each other in the map, too, are as they were: only a missing one is reported.
void check_result(const MapRun& run, const Baseline& shown, Findings& findings) {
  // A line is reported where the template writes it, or where the map has it.
  const auto report = [&](KnownRule rule, const Origin& origin, const std::string& text,
                          const std::string& key) {
    const Place seen{run.map.path, origin.line};
    const Pair* writer = origin.writer;
    findings.add(rule, writer ? Place{writer->current.filename, origin.output} : seen, text, seen,
                 writer ? "" : key);
  };
  std::size_t b = 0;  // the kind; of the first line nothing is asked
  for (std::size_t j = 1; j < run.lines.size(); ++j) {
    const auto line = run.lines[j];
    const std::size_t a = std::exchange(b, shown.kind(line));
    const Origin &before = run.origins[j - 1], &origin = run.origins[j];
    const bool written = origin.writer && run.edition.is_last(*origin.writer);
    if (b == 0 && !unindented(line).empty() &&
        (!written || origin.writer->current.output[origin.output].marker == Marker::rest))
      report("unknown-line", origin, quote(line) + " begins like no line of the baseline",
             std::string(line.substr(0, line.find_first_of(" 0123456789"))));
    const bool same_block =
        written && origin.writer == before.writer && origin.output > before.output;
    if (a == 0 || b == 0 || same_block || shown.follows(a, b))
      continue;
    const auto word = [&](std::size_t i) { return first_word(run.map.lines[i]); };
    const std::size_t i = std::max<std::size_t>(origin.line, 1);
    const bool followed =
        word(i - 1) == first_word(run.lines[j - 1]) || (a == b && word(i - 1) == word(i));
    const auto missing = shown.missing(a, b);
    if (!missing.empty() || (!followed && !shown.may_follow(a, b)))
      report("output-order", before.writer ? before : origin,
             quote(line) + " does not follow " + quote(run.lines[j - 1]) + " in the baseline" +
                 missing,
             std::to_string(a) + " " + std::to_string(b));
  }
}

}  // namespace

void check_map(const MapRun& run, Findings& findings) {
  for (const Pass& pass : run.passes)
    for (const Block& block : pass.blocks)
      check_block(run, pass, block, findings);
  if (run.edition.shown())
    check_result(run, run.edition.baseline, findings);
}
