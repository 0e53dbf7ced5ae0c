// The rules about the files of an edition: their line ends, which there are, and the version that
// converted maps get.
#include "check/sections.h"
#include "check/template_rules.h"
#include "engine/numbers.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <set>

namespace {

bool is_one_line(std::string_view text) {
  return !text.empty() && text.find(LineArray::line_end) == text.npos;
}

bool is_lone(std::string_view text, std::size_t i) {
  if (text[i] == '\n')
    return i == 0 || text[i - 1] != '\r';
  return text[i] == '\r' && (i + 1 == text.size() || text[i + 1] != '\n');
}

// Editors end a line at every LF, so the lines are counted by these.
void check_line_ends(const std::string& path, std::string_view text, Findings& findings) {
  constexpr const char* rule = "line-ends";
  if (is_one_line(text))
    return findings.error(rule, path, 0, "it has no CR LF, so the whole file counts as one line");
  std::size_t line = 0, first = 0, count = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (is_lone(text, i) && count++ == 0)
      first = line;
    line += text[i] == '\n' ? 1 : 0;
  }
  if (count > 0)
    findings.warning(rule, path, first,
                     "a lone LF or CR ends no line: it is part of one (" +
                         counted(count, "such character") + " in the file)");
}

// Whether both files are there and have lines.
bool is_readable(const Pair& pair) {
  return pair.whole() && !is_one_line(pair.old.lines.text()) &&
         !is_one_line(pair.current.lines.text());
}

const Template& file_of(const Pair& pair) {
  return pair.old.failure ? static_cast<const Template&>(pair.current) : pair.old;
}

// Reports pairs of which a file is missing, and those that no map needs.
void check_pairs(const Pairs& pairs, const std::function<bool(const std::string&)>& needed,
                 Findings& findings) {
  for (const auto& [version, pair] : pairs) {
    const Template& missing =
        pair.old.failure ? static_cast<const Template&>(pair.old) : pair.current;
    if (!pair.whole())
      findings.error("missing-pair", file_of(pair).filename, 0,
                     "there is no " + name_of(missing.filename));
    if (!needed(version))
      findings.warning("missing-pair", file_of(pair).filename, 0,
                       "no map needs it: the baseline says that another version is current");
  }
}

// Reports the versions between the oldest and the current one that have no pair.
void check_versions(const Edition& edition, Findings& findings) {
  double oldest = *edition.version;
  for (const auto& [version, pair] : edition.pairs)
    if (has_number(version))
      oldest = std::min(oldest, numeric_value(version));
  for (double version = std::floor(oldest) + 1; version < *edition.version; ++version)
    if (!edition.pairs.contains(number_text(version)))
      findings.warning("missing-pair", edition.baseline, 1,
                       "maps of version " + number_text(version) + " have no templates");
}

// The version line that maps of an old version have if they have the baseline's.
std::string usual_line(const Edition& edition, const std::string& version) {
  std::string_view line = (*edition.baseline_lines)[1];
  line.remove_suffix(version_of(line).size());
  return std::string(line) + version;
}

bool is_current(const Edition& edition, std::string_view line) {
  return has_number(version_of(line)) && numeric_value(version_of(line)) == *edition.version;
}

// The first line that a section writes; nothing where it writes none.
std::optional<std::size_t> first_output(const NewTemplate& current, std::size_t s) {
  const auto [begin, end] = output_of(current, s);
  for (std::size_t i = begin; i < end; ++i)
    if (current.output[i].marker != Marker::dropped)
      return i;
  return std::nullopt;
}

// The line of the new template that decides about the version of maps with such a version line, and
// whether it ends in the current one.
struct Version {
  std::size_t line;
  bool current;
};

Version version_written(const Edition& edition, const Pair& pair, std::string_view version_line) {
  const std::size_t t = matchline(pair.old, version_line);
  const auto line = t > 0 ? first_output(pair.current, sectionof(pair.old, t)) : std::nullopt;
  if (!line)
    return {0, false};
  return {*line, pair.current.output[*line].marker == Marker::none &&
                     is_current(edition, pair.current.lines[*line])};
}

// What the version line of maps may be: the baseline's if the template recognises it, else any
// recognition line that ends in the version.
std::vector<std::string> version_lines(const Edition& edition, const OldTemplate& old,
                                       const std::string& version) {
  const std::string usual = usual_line(edition, version);
  if (matchline(old, usual) > 0)
    return {usual};
  std::vector<std::string> lines;
  for (std::size_t i = 1; i < old.lines.size(); ++i)
    if (recognises(old, i) && version_of(old.lines[i]) == version)
      lines.emplace_back(old.lines[i]);
  return lines;
}

// Whether any section writes a line first that ends in the current version.
bool writes_version(const Edition& edition, const Pair& pair) {
  for (std::size_t s = 0; s < pair.current.newheads.size(); ++s)
    if (const auto line = first_output(pair.current, s);
        line && is_current(edition, pair.current.lines[*line]))
      return true;
  return false;
}

void check_title(const OldTemplate& old, Findings& findings) {
  if (const std::size_t t = matchline(old, old.lines[0]); !old.lines[t].empty() && t > 0)
    findings.warning("no-version", old.filename, 0,
                     "line " + std::to_string(t + 1) + ", " + quoted(old.lines[t]) +
                         ", recognises it: in a map that begins so, a block starts there");
}

// Adds the version line that the pair writes to `written`.
void check_version(const Edition& edition, const Pair& pair, const std::string& version,
                   std::set<std::string>& written, Findings& findings) {
  constexpr const char* rule = "no-version";
  check_title(pair.old, findings);
  const auto lines = version_lines(edition, pair.old, version);
  std::size_t place = 0;
  for (const std::string& line : lines) {
    const Version found = version_written(edition, pair, line);
    if (found.current)
      return static_cast<void>(written.emplace(pair.current.lines[found.line]));
    place = place > 0 ? place : found.line;
  }
  if (lines.empty() && writes_version(edition, pair))
    findings.warning(rule, pair.old.filename, 0,
                     "no line recognises the version line " + quoted(usual_line(edition, version)) +
                         "; if such maps have another, write all of it");
  else
    findings.error(rule, pair.current.filename, place,
                   "no section writes a version line that ends in " +
                       number_text(*edition.version) + ": each run converts such maps again");
}

// The fix pass must leave the version lines alone that the first pass writes, or write them anew.
void check_fix(const Edition& edition, const Pair& fix, const std::set<std::string>& written,
               Findings& findings) {
  check_title(fix.old, findings);
  for (const std::string& line : written) {
    const Version found = version_written(edition, fix, line);
    if (matchline(fix.old, line) > 0 && !found.current)
      findings.warning("no-version", fix.current.filename, found.line,
                       "it can replace the version line " + quoted(line) + " by another");
  }
}

}  // namespace

void line_ends(const Edition& edition, Findings& findings) {
  if (edition.baseline_lines)
    check_line_ends(edition.baseline, edition.baseline_lines->text(), findings);
  for (const Pairs* pairs : {&edition.pairs, &edition.fixes})
    for (const auto& [version, pair] : *pairs)
      for (const Template* file :
           {static_cast<const Template*>(&pair.old), static_cast<const Template*>(&pair.current)})
        if (!file->failure)
          check_line_ends(file->filename, file->lines.text(), findings);
}

void missing_pair(const Edition& edition, Findings& findings) {
  constexpr const char* rule = "missing-pair";
  const auto is_old = [&](const std::string& version) {
    return !edition.version || numeric_value(version) < *edition.version;
  };
  const auto is_current = [&](const std::string& version) {
    return !edition.version || version == number_text(*edition.version);
  };
  check_pairs(edition.pairs, is_old, findings);
  check_pairs(edition.fixes, is_current, findings);
  if (!edition.baseline_lines)
    return findings.error(rule, edition.baseline, 0,
                          "the file is missing, which says what version is current");
  if (!edition.version)
    return findings.error(rule, edition.baseline, 1, "the line does not end in a version");
  check_versions(edition, findings);
  if (edition.letter == Edition::expansion && !edition.fix())
    findings.error(rule, edition.baseline, 1,
                   "there are no templates of the fix pass for version " +
                       number_text(*edition.version));
}

void no_version(const Edition& edition, Findings& findings) {
  if (!edition.version)
    return;
  std::set<std::string> written;
  for (const auto& [version, pair] : edition.pairs)
    if (is_readable(pair) && numeric_value(version) < *edition.version)
      check_version(edition, pair, version, written, findings);
  if (edition.fix() && is_readable(*edition.fix()))
    check_fix(edition, *edition.fix(), written, findings);
}

void check_templates(const Edition& edition, Findings& findings) {
  for (const auto rule : {line_ends, missing_pair, no_version})
    rule(edition, findings);
  for (const Pairs* pairs : {&edition.pairs, &edition.fixes})
    for (const auto& [version, pair] : *pairs)
      for (const auto rule : {section_count, section_order, count_past_end, count_too_small,
                              bad_count, empty_line, shadowed, dead_marker, block_overlap})
        if (is_readable(pair))
          rule(edition, pair, findings);
}
