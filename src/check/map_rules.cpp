// The rules about the conversion of maps.
#include "check/map_rules.h"

#include "check/sections.h"
#include "engine/numbers.h"

#include <algorithm>
#include <optional>

namespace {

// Whether a value that `line` holds goes across position `at`. A quotation mark there may be the
// value's start only if `at_start`.
bool cuts(std::string_view line, std::size_t at, bool at_start) {
  if (at == 0 || at >= line.size() || is_blank(line[at - 1]))
    return false;
  const char before = line[at - 1], first = line[at];
  const bool in_number = is_digit(first) && (is_digit(before) || before == '.' || before == '-');
  const bool in_word = is_letter(first) && is_letter(before);
  return in_number || in_word || (first == '"' && !at_start);
}

// Where the marker of an output line begins to copy from a line; nothing where it copies nothing.
std::optional<std::size_t> copied_from(const OutputLine& output, std::string_view line) {
  switch (output.marker) {
  case Marker::rest:
    return output.text.size() - 1;
  case Marker::last_two:
    return line.size() - std::min<std::size_t>(2, line.size());
  case Marker::last_character:
    return line.size() - std::min<std::size_t>(1, line.size());
  default:
    return std::nullopt;
  }
}

// Whether the marker of an output line loses a part of the value in a line, or doubles the blank
// before it.
bool misses_value(const OutputLine& output, std::string_view line) {
  const auto at = copied_from(output, line);
  if (!at || output.marker != Marker::rest)
    return at && cuts(line, *at, false);
  const bool nothing_left = *at >= line.size() && stripped(line).find(' ') != line.npos;
  const bool two_blanks = *at < line.size() && is_blank(line[*at]);
  return nothing_left || two_blanks || cuts(line, *at, true);
}

// What a line of the template has cut off first, and how often.
struct Cut {
  std::size_t line;  // of the pass's input
  std::size_t count = 0;
};

std::map<std::size_t, Cut> cuts_of(const Pass& pass) {
  std::map<std::size_t, Cut> cuts;
  for (const Block& block : pass.blocks) {
    const auto [begin, end] = output_of(pass.pair.current, pass.section_of(block));
    for (std::size_t i = begin; i < end; ++i) {
      const OutputLine& output = pass.pair.current.output[i];
      const std::size_t line = block.line + (output.marker == Marker::rest ? 0 : i - begin);
      if (misses_value(output, pass.input[line]))
        ++cuts.try_emplace(i, Cut{line}).first->second.count;
    }
  }
  return cuts;
}

std::string_view first_word(std::string_view line) {
  line = unindented(line);
  return line.substr(0, line.find_first_of(" \t#"));
}

// The line of the template that would start another block at line `k` of a pass's input; 0 when
// there is none. The section's other recognition lines may be there for lines inside the block.
std::size_t starts_other(const Pass& pass, std::size_t k, const Block& block) {
  const std::size_t t = matchline(pass.pair.old, pass.input[k]);
  const bool same_section = sectionof(pass.pair.old, t) == pass.section_of(block);
  if (t == 0 || !recognises(pass.pair.old, t) || (same_section && t != block.recognised_by))
    return 0;
  const bool all = !pass.is_fix || (matchline(pass.pair.old, pass.input[k + 1]) > 0 &&
                                    matchline(pass.pair.old, pass.input[k + 2]) > 0);
  return all ? t : 0;
}

// The sections of lines that were reported, and those of their blocks.
using Known = std::set<std::pair<std::size_t, std::size_t>>;

// Reports a line that could start a block, but is replaced in another: the first one of each two
// sections. It is meant to be there if the output line that is aligned with it begins with the same
// word, or with that of the section which would have taken it.
void check_block(const MapRun& run, const Pass& pass, const Block& block, Known& known,
                 Findings& findings) {
  const std::size_t s = pass.section_of(block);
  const auto [begin, end] = output_of(pass.pair.current, s);
  for (std::size_t d = 1; d < block.count; ++d) {
    const std::size_t t = starts_other(pass, block.line + d, block);
    if (t == 0)
      continue;
    const auto line = pass.input[block.line + d];
    const auto other = output_of(pass.pair.current, sectionof(pass.pair.old, t));
    const auto word_of = [&](std::size_t i) { return first_word(pass.pair.current.lines[i]); };
    const bool meant = begin + d < end &&
                       (word_of(begin + d) == first_word(line) ||
                        (other.begin < other.end && word_of(begin + d) == word_of(other.begin)));
    if (meant || !known.emplace(s, sectionof(pass.pair.old, t)).second)
      continue;
    findings.error("block-overlap", run.map.path, pass.origins[block.line + d].line,
                   quoted(line) + " is replaced in a block of section " +
                       section_name(pass.pair.old, s) + ", but " + line_number(t) + " of " +
                       name_of(pass.pair.old.filename) + " recognises it");
  }
}

// Reports a block that ends too early or too late: the output ends in a fixed line which in the map
// stands right behind the block, or inside it with other lines behind.
void check_end(const MapRun& run, const Pass& pass, const Block& block, Known& known,
               Findings& findings) {
  const std::size_t s = pass.section_of(block), after = block.line + block.count;
  const auto [begin, end] = output_of(pass.pair.current, s);
  if (begin == end || pass.pair.current.output[end - 1].marker != Marker::none || block.count == 0)
    return;
  const auto last = unindented(pass.pair.current.lines[end - 1]);
  const auto is_last = [&](std::size_t k) { return unindented(pass.input[k]) == last; };
  std::size_t k = after;
  while (k > block.line && !is_last(k))
    --k;
  if (last.empty() || k == block.line || is_last(after - 1) || !known.emplace(s, s).second)
    return;
  findings.warning("block-overlap", run.map.path, pass.origins[std::min(k + 1, after)].line,
                   quoted(pass.input[std::min(k + 1, after)]) +
                       (k == after ? " stays behind" : " is replaced in") + " a block of section " +
                       section_name(pass.pair.old, s) + ", whose output ends in " + quoted(last));
}

void remove_matched(const Pass& pass, std::set<std::size_t>& lines) {
  for (const Block& block : pass.blocks)
    for (std::size_t d = 0; d < (pass.is_fix ? 3 : 1); ++d)
      lines.erase(matchline(pass.pair.old, pass.input[block.line + d]));
}

}  // namespace

void cut_value(const MapRun& run, Findings& findings) {
  for (const Pass& pass : run.passes)
    for (const auto& [i, cut] : cuts_of(pass)) {
      const auto line = pass.input[cut.line];
      const auto at = *copied_from(pass.pair.current.output[i], line);
      findings.warning(
          "cut-value", run.map.path, pass.origins[cut.line].line,
          quoted(pass.pair.current.lines[i]) + ", " + line_number(i) + " of " +
              name_of(pass.pair.current.filename) + ", copies " +
              quoted(line.substr(std::min(at, line.size()))) + " of " + quoted(line) +
              (cut.count > 1 ? " (the first of " + std::to_string(cut.count) + ")" : ""));
    }
}

void past_map_end(const MapRun& run, Findings& findings) {
  for (const Pass& pass : run.passes)
    for (const Block& block : pass.blocks) {
      const std::size_t s = pass.section_of(block);
      if (pass.pair.old.counts[s] > static_cast<long long>(pass.input.size() - block.line))
        findings.error("past-map-end", run.map.path, pass.origins[block.line].line,
                       "a block of section " + section_name(pass.pair.old, s) + " has " +
                           std::to_string(pass.pair.old.counts[s]) +
                           " lines, but the map ends before that");
    }
}

void swallowed_block(const MapRun& run, Findings& findings) {
  for (const Pass& pass : run.passes) {
    Known known;
    for (const Block& block : pass.blocks) {
      check_block(run, pass, block, known, findings);
      check_end(run, pass, block, known, findings);
    }
  }
}

void not_current(const MapRun& run, Findings& findings) {
  constexpr const char* rule = "not-current";
  if (!run.result)
    return findings.error(rule, run.map.path, 1,
                          "it cannot be converted: " + quoted(name_of(run.result.failure().path)) +
                              ": " + run.result.failure().reason);
  const LineArray lines = LineArray::split(*run.result);
  const auto version = version_of(lines[1]);
  if (!has_number(version) || numeric_value(version) != *run.edition.version)
    findings.error(rule, run.map.path, 1,
                   "the version of the converted map is " + quoted(version) + ", not " +
                       number_text(*run.edition.version));
}

void not_stable(const MapRun& run, Findings& findings) {
  const Map again{run.map.path, LineArray::split(*run.result)};
  if (!is_old(run.edition, again))
    return;
  const MapRun second = convert(run.edition, again);
  if (!second.result || *second.result != *run.result)
    findings.error("not-stable", run.map.path, 1,
                   second.result ? "a second run would change the converted map again"
                                 : "a second run could not convert the converted map again");
}

void UnmatchedLines::add(const MapRun& run) {
  for (const Pass& pass : run.passes) {
    const auto [at, added] = pairs.try_emplace(&pass.pair);
    for (std::size_t i = 0; added && i < pass.pair.old.lines.size(); ++i)
      if (recognises(pass.pair.old, i))
        at->second.lines.insert(i);
    remove_matched(pass, at->second.lines);
    find_reasons(run, pass, at->second);
  }
}

// Looks for lines of a map that only tabs and blanks keep from being recognised.
void UnmatchedLines::find_reasons(const MapRun& run, const Pass& pass, Unmatched& unmatched) {
  const LooseIndex index(pass.pair.old);
  for (std::size_t k = 0; k < pass.input.size() && !unmatched.lines.empty(); ++k)
    if (const std::size_t t = index.find(pass.input[k]);
        unmatched.lines.contains(t) && matchline(pass.pair.old, pass.input[k]) == 0)
      unmatched.reasons.emplace(
          t, ": " + line_number(pass.origins[k].line) + " of " + name_of(run.map.path) +
                 " differs only in its tabs and blanks: " + quoted(pass.input[k]));
}

void UnmatchedLines::report(Findings& findings) const {
  for (const auto& [pair, unmatched] : pairs)
    for (const std::size_t line : unmatched.lines) {
      const auto reason = unmatched.reasons.find(line);
      findings.warning("unmatched", pair->old.filename, line,
                       quoted(pair->old.lines[line]) + " recognises no line of the given maps" +
                           (reason == unmatched.reasons.end() ? "" : reason->second));
    }
}
