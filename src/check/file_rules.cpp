// The rules about the files of an edition.
#include "check/finding.h"
#include "check/map_run.h"
#include "check/sections.h"
#include "engine/numbers.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace {

using File = std::pair<std::string, std::string_view>;  // its path and text

std::vector<File> files_of(const Edition& edition) {
  std::vector<File> files;
  if (edition.baseline)
    files.emplace_back(edition.baseline_file, edition.baseline->lines.text());
  for (const Pair* pair : edition.all_pairs())
    for (const Template* file :
         {static_cast<const Template*>(&pair->old), static_cast<const Template*>(&pair->current)})
      if (!file->failure)
        files.emplace_back(file->filename, file->lines.text());
  return files;
}

// Of a pair, the file that is there.
const Template& file_of(const Pair& pair) {
  return pair.old.failure ? static_cast<const Template&>(pair.current) : pair.old;
}

// The version lines that maps of a version may have: the baseline's, or those recognition lines
// that end in the version.
std::vector<std::string> version_lines(const Edition& edition, const OldTemplate& old,
                                       const std::string& version) {
  std::string usual(edition.baseline->lines[1]);
  usual.resize(usual.size() - version_of(usual).size());
  if (matchline(old, usual + version) > 0)
    return {usual + version};
  std::vector<std::string> lines;
  for (std::size_t i = 1; i < old.lines.size(); ++i)
    if (recognises(old, i) && version_of(old.lines[i]) == version)
      lines.emplace_back(old.lines[i]);
  return lines;
}

// Whether maps that begin with a title and a version line become current ones, also if the lines
// behind are those that the fix pass recognises.
bool becomes_current(const Edition& edition, std::string_view title, const std::string& line) {
  std::string text = std::string(title) + "\r\n" + line;
  for (std::size_t i = 1; edition.fix() && i < edition.fix()->old.lines.size(); ++i)
    if (recognises(edition.fix()->old, i))
      text += "\r\n" + std::string(edition.fix()->old.lines[i]) + " ";
  const Map map{"", LineArray::split(text)};
  const MapRun run = convert(edition, map);
  return !run.result || is_current(edition, run.lines);
}

bool writes_version(const Edition& edition, const NewTemplate& current) {
  for (std::size_t i = 1; i < current.lines.size(); ++i)
    if (current.output[i].marker == Marker::none && !is_header(current.lines[i]) &&
        numeric_value(version_of(current.lines[i])) == *edition.version)
      return true;
  return false;
}

std::vector<const Pair*> newest_first(const Pairs& pairs) {
  std::vector<std::pair<double, const Pair*>> sorted;
  for (const auto& [version, pair] : pairs)
    if (pair.is_readable())
      sorted.emplace_back(-numeric_value(version), &pair);
  std::ranges::sort(sorted);
  std::vector<const Pair*> result;
  for (const auto& [version, pair] : sorted)
    result.push_back(pair);
  return result;
}

// The pairs that are there and that maps need, with the version lines of these.
std::vector<std::pair<const Pair*, std::vector<std::string>>> needed_pairs(const Edition& edition) {
  std::vector<std::pair<const Pair*, std::vector<std::string>>> needed;
  for (const auto& [version, pair] : edition.pairs)
    if (edition.version && pair.is_readable() && numeric_value(version) < *edition.version)
      needed.emplace_back(&pair, version_lines(edition, pair.old, version));
  return needed;
}

}  // namespace

void line_ends(const Edition& edition, const Report& report) {
  for (const auto& [path, text] : files_of(edition))
    if (is_one_line(text))
      report({path, 0}, one_line_reason(text));
}

// Editors end a line at every LF, so the lines are counted by these.
void odd_bytes(const Edition& edition, const Report& report) {
  for (const auto& [path, text] : files_of(edition)) {
    if (text.starts_with(byte_order_mark))
      report({path, 0, 1}, "a byte order mark is part of the first line: save the file without it");
    std::size_t line = 0, begin = 0;
    for (std::size_t i = 0; i < text.size() && !is_one_line(text); ++i) {
      const bool cr = text[i] == '\r' && !text.substr(i + 1).starts_with('\n');
      const bool lf = text[i] == '\n' && (i == 0 || text[i - 1] != '\r');
      if (cr || lf) {
        report({path, line, i - begin + 1}, "a lone LF or CR ends no line: it is part of one");
        break;
      }
      line += text[i] == '\n' ? 1 : 0;
      begin = text[i] == '\n' ? i + 1 : begin;
    }
  }
}

void missing_pair(const Edition& edition, const Report& report) {
  for (const Pair* pair : edition.all_pairs())
    if (pair->old.failure || pair->current.failure)
      report({file_of(*pair).filename, 0},
             "there is no " +
                 name_of(pair->old.failure ? pair->old.filename : pair->current.filename));
  if (!edition.baseline)
    report({edition.baseline_file, 0}, "the file is missing, which says what version is current");
  if (edition.letter == Edition::expansion && edition.version && !edition.fix())
    report({edition.baseline_file, 1},
           "there are no templates of the fix pass for version " + number_text(*edition.version));
}

void bad_version(const Edition& edition, const Report& report) {
  const auto line = edition.baseline ? edition.baseline->lines[1] : std::string_view();
  const std::size_t start = line.size() - version_of(line).size();
  if (edition.baseline && !edition.version)
    report({edition.baseline_file, 1}, "the line does not end in a version");
  else if (start > 0 && is_digit(line[start - 1]))
    report({edition.baseline_file, 1, start + 1},
           "the version is the last two characters alone: " + quoted(line.substr(start)));
}

void version_gap(const Edition& edition, const Report& report) {
  if (!edition.version)
    return;
  const double version = *edition.version;
  double oldest = version;
  for (const auto& [text, pair] : edition.pairs)
    oldest = has_number(text) ? std::min(oldest, numeric_value(text)) : oldest;
  for (double v = std::floor(oldest) + 1; v < version; ++v)
    if (!edition.pairs.contains(number_text(v)))
      report({edition.baseline_file, 1},
             "maps of version " + number_text(v) + " have no templates");
  const auto needless = [&](const Pair& pair) {
    report({file_of(pair).filename, 0},
           "no map needs it: the baseline says that " + number_text(version) + " is current");
  };
  for (const auto& [text, pair] : edition.pairs)
    if (numeric_value(text) >= version)
      needless(pair);
  for (const auto& [text, pair] : edition.fixes)
    if (&pair != edition.fix())
      needless(pair);
}

void no_version(const Edition& edition, const Report& report) {
  for (const auto& [pair, lines] : needed_pairs(edition)) {
    const auto good = [&, title = pair->old.lines[0]](const std::string& line) {
      return becomes_current(edition, title, line);
    };
    if (lines.empty() ? !writes_version(edition, pair->current) : std::ranges::none_of(lines, good))
      report({pair->current.filename, 0}, "its maps do not become those of version " +
                                              number_text(*edition.version) +
                                              ", so that each run converts them again");
  }
}

void version_line(const Edition& edition, const Report& report) {
  for (const auto& [pair, lines] : needed_pairs(edition))
    if (lines.empty() && writes_version(edition, pair->current))
      report({pair->old.filename, 0}, "no line recognises a version line like " +
                                          quoted(edition.baseline->lines[1]) +
                                          ", or ends in the version");
}

// A word that a newer pair recognises at the start of a line is gone when the baseline has no line
// like it. An older pair has to know it, or what is written for it, or its maps keep the line.
void forgotten_word(const Edition& edition, const Report& report) {
  if (!edition.baseline || !edition.baseline->shows_map())
    return;
  std::map<std::string_view, std::set<std::string_view>> gone;  // with the words written for them
  for (const Pair* pair : newest_first(edition.pairs)) {
    std::set<std::string_view> own;
    for (std::size_t i = 1; i < pair->old.lines.size(); ++i)
      own.insert(first_word(pair->old.lines[i]));
    for (std::size_t i = 1; i < pair->current.lines.size(); ++i)
      own.insert(first_word(pair->current.lines[i]));
    for (const auto& [word, written] : gone)
      if (!own.contains(word) &&
          std::ranges::none_of(written, [&](auto w) { return own.contains(w); }))
        report({pair->old.filename, 0},
               "no line of the pair is about " + quoted(word) +
                   ", which a newer pair recognises and the baseline has no more");
    for (std::size_t i = 1; i < pair->old.lines.size(); ++i)
      if (const auto word = first_word(pair->old.lines[i]);
          recognises(pair->old, i) && !word.empty() && !edition.baseline->has_word_like(word))
        for (auto [k, end] = output_of(pair->current, sectionof(pair->old, i)); k < end; ++k)
          gone[word].insert(first_word(pair->current.lines[k]));
  }
}

void other_width(const Edition& edition, const Report& report) {
  std::map<std::string_view, const NewTemplate*> wide;
  const auto visit = [&](Marker marker, const auto& found) {
    for (const auto& [version, pair] : edition.pairs)
      for (std::size_t i = 0; i < pair.current.lines.size(); ++i)
        if (pair.current.output[i].marker == marker)
          found(pair.current, i, pair.current.output[i].text);
  };
  visit(Marker::last_two,
        [&](const NewTemplate& file, std::size_t, std::string_view text) { wide[text] = &file; });
  visit(Marker::last_character, [&](const NewTemplate& file, std::size_t i, std::string_view text) {
    if (const auto at = wide.find(text); at != wide.end() && at->second != &file)
      report({file.filename, i, text.size() + 1}, quoted(file.lines[i]) +
                                                      " takes one character, but two in " +
                                                      name_of(at->second->filename));
  });
}
