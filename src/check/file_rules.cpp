// The rules about the files of an edition.
#include "check/finding.h"
#include "check/map_run.h"
#include "engine/numbers.h"

#include <algorithm>
#include <cmath>

namespace {

// Whether maps that begin with a title and a version line become current ones, also if the lines
// behind are those that the fix pass recognises.
bool becomes_current(const EditionTemplates& edition, std::string_view title,
                     const std::string& line) {
  std::string text = std::string(title) + "\r\n" + line;
  for (std::size_t i = 1; edition.fix() && i < edition.fix()->old.lines.size(); ++i)
    if (recognises(edition.fix()->old, i))
      text += "\r\n" + std::string(edition.fix()->old.lines[i]) + " ";
  const Map map{"", LineArray::split(text)};
  const MapRun run = convert(edition, map);
  return !run.result || is_current(edition, run.lines);
}

// Calls `visit` with each pair that old maps need, and with the version line of its maps: the
// baseline's with the old version.
template <class Visit> void for_each_version(const EditionTemplates& edition, const Visit& visit) {
  for (const auto& [version, pair] : edition.pairs)
    if (pair.is_readable() && edition.baseline.version &&
        numeric_value(version) < *edition.baseline.version) {
      std::string line(edition.baseline.lines[1]);
      visit(pair, line.replace(line.size() - version_of(line).size(), line.npos, version));
    }
}

}  // namespace

void line_ends(const EditionTemplates& edition, const Report& report) {
  for (const Template* file : edition.files())
    if (const auto fault = one_line_fault(file->lines.text()); !fault.empty())
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
    if (i < lines.size() && one_line_fault(lines.text()).empty())
      report({file->filename, i, at + 1}, "a lone LF or CR ends no line: it is part of one");
  }
}

void missing_pair(const EditionTemplates& edition, const Report& report) {
  const Baseline& baseline = edition.baseline;
  for (const Pair* pair : edition.all_pairs())
    for (const Template* file : pair->files())
      if (file->failure)
        report({pair->present().filename, 0}, "there is no " + name_of(file->filename));
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
  const auto needless = [&](const Pair& pair) {
    report({pair.present().filename, 0},
           "no map needs it: the baseline says that " + number_text(current) + " is current");
  };
  for (const auto& [text, pair] : edition.pairs) {
    version = has_number(text) ? std::min(version, std::floor(numeric_value(text))) : version;
    if (numeric_value(text) >= current)
      needless(pair);
  }
  for (; version < current; ++version)
    if (!edition.pairs.contains(number_text(version)))
      report({edition.baseline.filename, 1},
             "maps of version " + number_text(version) + " have no templates");
  for (const auto& [text, pair] : edition.fixes)
    if (&pair != edition.fix())
      needless(pair);
}

void no_version(const EditionTemplates& edition, const Report& report) {
  for_each_version(edition, [&](const Pair& pair, const std::string& line) {
    if (matchline(pair.old, line) > 0 && !becomes_current(edition, pair.old.lines[0], line))
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
  struct Gone {
    std::string place;                   // where it is recognised
    std::set<std::string_view> written;  // the words that are written for it, and itself
  };
  std::map<std::string_view, Gone> gone;
  for (auto at = edition.pairs.rbegin(); edition.shown() && at != edition.pairs.rend(); ++at) {
    const auto& [old, current] = at->second;
    std::set<std::string_view> own;
    for (const Template* file : at->second.files())
      for (std::size_t i = 1; i < file->lines.size(); ++i)
        own.insert(first_word(file->lines[i]));
    for (const auto& [word, known] : gone)
      if (std::ranges::none_of(known.written, [&](const auto w) { return own.contains(w); }))
        report({old.filename, 0}, "it knows nothing of " + quote(word) + ", which " + known.place +
                                      " recognises and the baseline does not have");
    for (std::size_t i = 1; i < old.lines.size(); ++i)
      if (const auto word = first_word(old.lines[i]);
          recognises(old, i) && !word.empty() &&
          edition.shown()->kinds({old.lines[i], Marker::rest}).empty()) {
        Gone& known = gone[word];
        known.place = line_number(i) + " of " + name_of(old.filename);
        known.written.insert(word);
        for (auto [k, end] = output_of(current, sectionof(old, i)); k < end; ++k)
          known.written.insert(first_word(current.lines[k]));
      }
  }
}
