// The rules about the conversion of maps. docs/templates.md describes them by the names that their
// findings bear.
#pragma once

#include "check/finding.h"
#include "check/map_run.h"

#include <map>
#include <set>
#include <string>

void not_current(const MapRun& run, Findings& findings);

// About a conversion that succeeded.
void cut_value(const MapRun& run, Findings& findings);
void past_map_end(const MapRun& run, Findings& findings);
void swallowed_block(const MapRun& run, Findings& findings);  // "block-overlap"
void not_stable(const MapRun& run, Findings& findings);

// "unmatched": recognition lines that match nothing in any map.
class UnmatchedLines {
public:
  void add(const MapRun& run);
  void report(Findings& findings) const;

private:
  // The recognition lines of a pair that no map has had yet, and the reasons for some of them.
  struct Unmatched {
    std::set<std::size_t> lines;
    std::map<std::size_t, std::string> reasons;
  };

  static void find_reasons(const MapRun& run, const Pass& pass, Unmatched& unmatched);

  std::map<const Pair*, Unmatched> pairs;
};
