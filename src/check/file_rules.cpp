// The rules about the files of an edition.
#include "check/finding.h"
#include "check/map_run.h"

#include <algorithm>
#include <cmath>
#include <ranges>

namespace {

// Calls `visit` with each pair that old maps need, and with the version line of its maps: the
// baseline's with the old version.
template <class Visit> void for_each_version(const EditionTemplates& edition, const Visit& visit) {
  for (const Pair& pair : edition.pairs)
    if (!pair.is_fix && pair.is_readable() && edition.baseline.version &&
        pair.number() < *edition.baseline.version) {
      std::string line(edition.baseline.lines[1]);
      visit(pair, line.replace(line.size() - version_of(line).size(), line.npos, pair.version));
    }
}

}  // namespace

void line_ends(const EditionTemplates& edition, const Report& report) {
  for (const Template* file : edition.files())
    if (const auto fault = one_line_fault(file->lines); !fault.empty())
      report({file->filename, 0}, fault);
}

// Editors end a line at every LF, so the places behind the first would be others there.
void odd_bytes(const EditionTemplates& edition, const Report& report) {
  for (const Template* file : edition.files()) {
    const LineArray& lines = file->lines;
    if (lines[0].starts_with(byte_order_mark))
      report({file->filename, 0, 1},
             "a byte order mark is part of the first line: save the file without it");
    std::size_t i = 0, at = 0;
    while (i < lines.size() && (at = lines[i].find_first_of("\r\n")) == std::string_view::npos)
      ++i;
    if (i < lines.size() && one_line_fault(lines).empty())
      report({file->filename, i, at + 1}, "a lone LF or CR ends no line: it is part of one");
  }
}

void missing_pair(const EditionTemplates& edition, const Report& report) {
  const Baseline& baseline = edition.baseline;
  for (const Pair& pair : edition.pairs)
    for (const Template* file : pair.files())
      if (file->failure)
        report({pair.present().filename, 0}, "there is no " + name_of(file->filename));
  if (baseline.failure)
    report({baseline.filename, 0}, "the file is missing, which says what version is current");
  if (edition.letter == EditionTemplates::expansion && baseline.version && !edition.fix())
    report({baseline.filename, 1},
           "there are no templates of the fix pass for version " + number_text(*baseline.version));
}

void bad_version(const EditionTemplates& edition, const Report& report) {
  const Baseline& baseline = edition.baseline;
  const auto line = baseline.lines[1];
  const std::size_t start = line.size() - version_of(line).size();
  if (!baseline.failure && !baseline.version)
    report({baseline.filename, 1}, "the line does not end in a version");
  else if (start > 0 && is_digit(line[start - 1]))
    report({baseline.filename, 1, start + 1},
           "the version is the last two characters alone: " + quote(line.substr(start)));
}

void version_gap(const EditionTemplates& edition, const Report& report) {
  if (!edition.baseline.version)
    return;
  const double current = *edition.baseline.version;
  double version = current;
  for (const Pair& pair : edition.pairs) {
    if (pair.is_fix ? &pair != edition.fix() : pair.number() >= current)
      report({pair.present().filename, 0},
             "no map needs it: the baseline says that " + number_text(current) + " is current");
    if (!pair.is_fix && has_number(pair.version))
      version = std::min(version, std::floor(pair.number()));
  }
  for (; version < current; ++version)
    if (!edition.find(false, number_text(version)))
      report({edition.baseline.filename, 1},
             "maps of version " + number_text(version) + " have no templates");
}

// Also if the lines behind are those that the fix pass recognises.
void no_version(const EditionTemplates& edition, const Report& report) {
  std::string behind;
  for (std::size_t i = 1; edition.fix() && i < edition.fix()->old.lines.size(); ++i)
    if (recognises(edition.fix()->old, i))
      behind += "\r\n" + std::string(edition.fix()->old.lines[i]) + " ";
  for_each_version(edition, [&](const Pair& pair, const std::string& line) {
    const std::string title(pair.old.lines[0]);
    const Map map{"", LineArray::split(title + "\r\n" + line + behind)};
    const MapRun run = convert(edition, map);
    if (matchline(pair.old, line) > 0 && run.result && !is_current(edition, run.lines))
      report({pair.current.filename, 0}, "its maps do not become those of version " +
                                             number_text(*edition.baseline.version) +
                                             ", so that each run converts them again");
  });
}

void version_line(const EditionTemplates& edition, const Report& report) {
  for_each_version(edition, [&](const Pair& pair, const std::string& line) {
    if (matchline(pair.old, line) == 0)
      report({pair.old.filename, 0}, "no line recognises " + quote(line));
  });
}

// A line that a newer pair recognises is gone when the baseline has none like it. An older pair has
// to know its word, or one that is written for it, or its maps keep the line.
void forgotten_word(const EditionTemplates& edition, const Report& report) {
  std::map<std::string_view, std::string> gone;                       // where it is recognised
  std::map<std::string_view, std::set<std::string_view>> successors;  // what is written for it
  for (const Pair& pair : edition.pairs | std::views::reverse) {
    if (pair.is_fix || !edition.shown())
      continue;
    const OldTemplate& old = pair.old;
    std::set<std::string_view> own;
    for (const Template* file : pair.files())
      for (std::size_t i = 1; i < file->lines.size(); ++i)
        own.insert(first_word(file->lines[i]));
    const auto knows = [&](std::string_view word) { return own.contains(word); };
    for (const auto& [word, place] : gone)
      if (!knows(word) && std::ranges::none_of(successors[word], knows))
        report({old.filename, 0}, "it knows nothing of " + quote(word) + ", which " + place +
                                      " recognises and the baseline does not have");
    for (std::size_t i = 1; i < old.lines.size(); ++i)
      if (const auto word = first_word(old.lines[i]);
          recognises(old, i) && !word.empty() &&
          edition.shown()->kinds({old.lines[i], Marker::rest}).empty()) {
        gone[word] = line_number(i) + " of " + name_of(old.filename);
        for (auto [k, end] = output_of(pair.current, sectionof(old, i)); k < end; ++k)
          successors[word].insert(first_word(pair.current.lines[k]));
      }
  }
}
