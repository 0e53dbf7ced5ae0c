// The rule about the version of converted maps.
#include "check/sections.h"
#include "check/template_rules.h"
#include "engine/numbers.h"

#include <set>

namespace {

// The version line that maps of an old version have if they have the baseline's.
std::string usual_line(const Edition& edition, const std::string& version) {
  std::string_view line = (*edition.baseline_lines)[1];
  line.remove_suffix(version_of(line).size());
  return std::string(line) + version;
}

// The line that section `s` writes first, and whether it is a version line of the current version.
struct FirstLine {
  std::size_t line = 0;  // of the new template
  bool current = false;
};

// Whether line `i` of a new template writes a version line of the current version.
bool writes_version(const Edition& edition, const NewTemplate& current, std::size_t i) {
  const auto version = version_of(current.lines[i]);
  return current.output[i].marker == Marker::none && has_number(version) &&
         numeric_value(version) == *edition.version;
}

FirstLine first_line(const Edition& edition, const NewTemplate& current, std::size_t s) {
  const auto [begin, end] = output_of(current, s);
  for (std::size_t i = begin; i < end; ++i)
    if (current.output[i].marker != Marker::dropped)
      return {i, writes_version(edition, current, i)};
  return {};
}

// The sections that the version line of maps may belong to: that of the baseline's line if the
// template recognises it, else those with a recognition line that ends in the version.
std::set<std::size_t> version_sections(const Edition& edition, const OldTemplate& old,
                                       const std::string& version) {
  if (const std::size_t t = matchline(old, usual_line(edition, version)))
    return {sectionof(old, t)};
  std::set<std::size_t> sections;
  for (std::size_t i = 1; i < old.lines.size(); ++i)
    if (recognises(old, i) && version_of(old.lines[i]) == version)
      sections.insert(sectionof(old, matchline(old, old.lines[i])));
  return sections;
}

void check_title(const OldTemplate& old, Findings& findings) {
  if (const std::size_t t = matchline(old, old.lines[0]); !old.lines[t].empty() && t > 0)
    findings.warning("no-version", old.filename, 0,
                     line_number(t) + ", " + quoted(old.lines[t]) +
                         ", recognises it: in a map that begins so, a block starts there");
}

bool any_writes_version(const Edition& edition, const NewTemplate& current) {
  for (std::size_t s = 0; s < current.newheads.size(); ++s) {
    const auto [begin, end] = output_of(current, s);
    for (std::size_t i = begin; i < end; ++i)
      if (writes_version(edition, current, i))
        return true;
  }
  return false;
}

// Adds the version line that the pair writes to `written`.
void check_version(const Edition& edition, const Pair& pair, const std::string& version,
                   std::set<std::string>& written, Findings& findings) {
  constexpr const char* rule = "no-version";
  check_title(pair.old, findings);
  const auto sections = version_sections(edition, pair.old, version);
  FirstLine first;
  for (const std::size_t s : sections) {
    first = first_line(edition, pair.current, s);
    if (first.current)
      return static_cast<void>(written.emplace(pair.current.lines[first.line]));
  }
  if (sections.empty() && any_writes_version(edition, pair.current))
    findings.warning(rule, pair.old.filename, 0,
                     "no line recognises the version line " + quoted(usual_line(edition, version)) +
                         "; if such maps have another, write all of it");
  else
    findings.error(rule, pair.current.filename, first.line,
                   "no section writes a version line that ends in " +
                       number_text(*edition.version) + ": each run converts such maps again");
}

// The fix pass must leave the version lines alone that the first pass writes, or write them anew.
void check_fix(const Edition& edition, const Pair& fix, const std::set<std::string>& written,
               Findings& findings) {
  check_title(fix.old, findings);
  for (const std::string& line : written) {
    const std::size_t t = matchline(fix.old, line);
    const FirstLine first = first_line(edition, fix.current, t > 0 ? sectionof(fix.old, t) : 0);
    if (t > 0 && !first.current)
      findings.warning("no-version", fix.current.filename, first.line,
                       "it can replace the version line " + quoted(line) + " by another");
  }
}

}  // namespace

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
