// Recognition lines that match nothing in any map.
#pragma once

#include "check/finding.h"
#include "check/map_run.h"

class UnmatchedLines {
public:
  void add(const MapRun& run);
  void report(const Report& report) const;

  // Whether a map was converted by that template.
  bool knows(const std::string& file) const;

private:
  // The recognition lines that no map has had yet, each with a line of a map that nearly matches.
  std::map<const Pair*, std::map<std::size_t, std::string>> pairs;
};
