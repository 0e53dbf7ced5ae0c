// Checks templates, and the conversion of maps by them.
#pragma once

#include "check/editions.h"
#include "check/finding.h"
#include "check/map_rules.h"

#include <string>
#include <vector>

class Checker {
public:
  // Checks the templates themselves.
  explicit Checker(std::vector<Edition> editions_in);

  // Checks the conversion of a map, which is of the edition whose baseline has the same first line,
  // or of the only one; if no edition or more than one fits, that is an error. A map of the current
  // format is not converted. Returns what changes in the map: a unified diff if `diff` is set, else
  // nothing.
  std::string add(const Map& map, bool diff);

  // To be called once, after the last map.
  Findings finish();

private:
  const Edition* edition_of(const Map& map) const;

  std::vector<Edition> editions;
  UnmatchedLines unmatched;
  Findings findings;
};
