// The rules about the files of an edition.
#include "check/checker.h"

#include <algorithm>
#include <cmath>
#include <ranges>

namespace {

// Editors end a line at every LF, so the places behind the first would be others there.
void check_lines(const Template& file, Findings& findings) {
  const LineArray& lines = file.lines;
  const auto fault = one_line_fault(lines);
  if (!fault.empty())
    findings.add("line-ends", {file.filename}, fault);
  if (lines[0].starts_with(byte_order_mark))
    findings.add("odd-bytes", {file.filename, 0, 1},
                 "a byte order mark is part of the first line: save the file without it");
  std::size_t i = 0, at = 0;
  while (i < lines.size() && (at = lines[i].find_first_of("\r\n")) == std::string_view::npos)
    ++i;
  if (i < lines.size() && fault.empty())
    findings.add("odd-bytes", {file.filename, i, at + 1},
                 "a lone LF or CR ends no line: it is part of one");
}

void check_baseline(const EditionTemplates& edition, Findings& findings) {
  const Baseline& baseline = edition.baseline;
  const auto line = baseline.lines[1];
  const std::size_t start = line.size() - version_of(line).size();
  if (baseline.failure)
    findings.add("missing-pair", {baseline.filename},
                 "the file is missing, which says what version is current");
  else if (!baseline.version)
    findings.add("bad-version", {baseline.filename, 1}, "the line does not end in a version");
  else if (start > 0 && is_digit(line[start - 1]))
    findings.add("bad-version", {baseline.filename, 1, start + 1},
                 "the version is the last two characters alone: " + quote(line.substr(start)));
  if (edition.letter == EditionTemplates::expansion && baseline.version && !edition.fix())
    findings.add("missing-pair", {baseline.filename, 1},
                 "there are no templates of the fix pass for version " + baseline.version_text());
}

void check_pairs(const EditionTemplates& edition, Findings& findings) {
  const auto& current = edition.baseline.version;
  double version = current.value_or(0);
  for (const Pair& pair : edition.pairs) {
    for (const Template* file : pair.files())
      if (file->failure)
        findings.add("missing-pair", {pair.present().filename},
                     "there is no " + name_of(file->filename));
    if (current && !edition.uses(pair))
      findings.add("version-gap", {pair.present().filename},
                   "no map needs it: the baseline says that " + edition.baseline.version_text() +
                       " is current");
    if (!pair.is_fix && has_number(pair.version))
      version = std::min(version, std::floor(pair.number()));
  }
  for (; version < current; ++version)
    if (!edition.find(false, number_text(version)))
      findings.add("version-gap", {edition.baseline.filename, 1},
                   "maps of version " + number_text(version) + " have no templates");
}

// Converts a map of a title and the version line of a pair's maps, which is the baseline's with the
// old version; also if the lines behind are those that the fix pass recognises.
void check_version_line(const EditionTemplates& edition, const Pair& pair, Findings& findings) {
  std::string line(edition.baseline.lines[1]);
  line.replace(line.size() - version_of(line).size(), line.npos, pair.version);
  if (matchline(pair.old, line) == 0)
    return findings.add("version-line", {pair.old.filename}, "no line recognises " + quote(line));
  std::string text = std::string(pair.old.lines[0]) + "\r\n" + line;
  for (std::size_t i = 1; edition.fix() && i < edition.fix()->old.lines.size(); ++i)
    if (recognises(edition.fix()->old, i))
      text += "\r\n" + std::string(edition.fix()->old.lines[i]) + " ";
  const Map map{"", LineArray::split(std::move(text))};
  const MapRun run = convert(edition, map);
  if (run.result && !is_current(edition, run.lines))
    findings.add("no-version", {pair.current.filename},
                 "its maps do not become those of version " + edition.baseline.version_text() +
                     ", so that each run converts them again");
}

// A line that a newer pair recognises is gone when the baseline has none like it. An older pair has
// to know its word, or one that is written for it, or its maps keep the line.
void check_words(const EditionTemplates& edition, Findings& findings) {
  std::map<std::string_view, std::string> gone;                       // where it is recognised
  std::map<std::string_view, std::set<std::string_view>> successors;  // what is written for it
  for (const Pair& pair : edition.pairs | std::views::reverse) {
    if (pair.is_fix)
      continue;
    const OldTemplate& old = pair.old;
    std::set<std::string_view> own;
    for (const Template* file : pair.files())
      for (std::size_t i = 1; i < file->lines.size(); ++i)
        own.insert(first_word(file->lines[i]));
    const auto knows = [&](std::string_view word) { return own.contains(word); };
    for (const auto& [word, place] : gone)
      if (!knows(word) && std::ranges::none_of(successors[word], knows))
        findings.add("forgotten-word", {old.filename},
                     "it knows nothing of " + quote(word) + ", which " + place +
                         " recognises and the baseline does not have");
    for (std::size_t i = 1; i < old.lines.size(); ++i)
      if (const auto word = first_word(old.lines[i]);
          recognises(old, i) && !word.empty() &&
          edition.baseline.kinds({old.lines[i], Marker::rest}).empty()) {
        gone[word] = line_number(i, old.filename);
        for (const std::size_t k : output_of(pair.current, sectionof(old, i)))
          successors[word].insert(first_word(pair.current.lines[k]));
      }
  }
}

}  // namespace

void check_files(const EditionTemplates& edition, Findings& findings) {
  for (const Template* file : edition.files()) {
    findings.read_remarks(*file);
    check_lines(*file, findings);
  }
  check_baseline(edition, findings);
  check_pairs(edition, findings);
  if (edition.shown())
    check_words(edition, findings);
  for (const Pair& pair : edition.pairs)
    if (pair.is_readable() && !pair.is_fix && edition.uses(pair))
      check_version_line(edition, pair, findings);
}
