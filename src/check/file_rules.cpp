// The rules about the files of an edition: their line ends, and which there are.
#include "check/sections.h"
#include "check/template_rules.h"
#include "engine/numbers.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <initializer_list>

namespace {

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

// Reports pairs of which a file is missing, and those that no map needs.
void check_pairs(const Pairs& pairs, const std::function<bool(const std::string&)>& needed,
                 Findings& findings) {
  constexpr const char* rule = "missing-pair";
  for (const auto& [version, pair] : pairs) {
    const bool no_old = pair.old.failure.has_value();
    const std::string& file = no_old ? pair.current.filename : pair.old.filename;
    const std::string& other = no_old ? pair.old.filename : pair.current.filename;
    if (no_old || pair.current.failure)
      findings.error(rule, file, 0, "there is no " + name_of(other));
    if (!needed(version))
      findings.warning(rule, file, 0,
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

}  // namespace

void line_ends(const Edition& edition, Findings& findings) {
  if (edition.baseline_lines)
    check_line_ends(edition.baseline, edition.baseline_lines->text(), findings);
  for (const Pairs* pairs : {&edition.pairs, &edition.fixes})
    for (const auto& [version, pair] : *pairs)
      for (const Template* file : std::initializer_list<const Template*>{&pair.old, &pair.current})
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
