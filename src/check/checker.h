// Checks templates, and the conversion of maps by them.
#pragma once

#include "check/finding.h"
#include "check/map_run.h"

// What the rules find in the files of an edition, in a pair of which both files are there and have
// lines, and in the conversion of a map that succeeded.
void check_files(const EditionTemplates& edition, Findings& findings);
void check_pair(const EditionTemplates& edition, const Pair& pair, Findings& findings);
void check_map(const MapRun& run, Findings& findings);

class Checker {
public:
  // Checks the templates themselves.
  explicit Checker(std::vector<EditionTemplates> editions_in);
  Checker(const Checker&) = delete;

  // Checks the conversion of a map. It is of the edition whose baseline has the same first line or,
  // where none has, whose old templates have; any other map is counted, but not checked. A map of
  // the current format is not converted. Returns the conversion, if there was one.
  std::optional<MapRun> add(const Map& map);

  // The findings, then a line that says what was checked. To be called once, after the last map.
  std::string report(bool colours);

  std::size_t count(Severity severity) const { return findings.count(severity); }

private:
  const EditionTemplates* edition_of(const Map& map);
  void note_matches(const MapRun& run);

  std::vector<EditionTemplates> editions;
  Findings findings;
  std::size_t converted = 0, failed = 0, current = 0, unknown = 0;  // maps

  // Of the pairs that converted maps: the recognition lines that no map has had yet, each with how
  // a line of a map nearly matches.
  std::map<const Pair*, std::map<std::size_t, std::string>> unmatched;
};
