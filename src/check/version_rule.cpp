// The rule about the version of converted maps.
#include "check/sections.h"
#include "check/template_rules.h"
#include "engine/numbers.h"

#include <optional>
#include <set>

namespace {

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
                     line_number(t) + ", " + quoted(old.lines[t]) +
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
