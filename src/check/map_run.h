// Converts a map in memory and keeps what happened.
#pragma once

#include "check/editions.h"
#include "engine/passes.h"

#include <memory>
#include <string>
#include <vector>

struct Map {
  std::string path;  // as named on the command line
  LineArray lines;
};

// Where a line of a result comes from.
struct Origin {
  std::size_t line;  // of the map
  bool copied;       // it is that line, unchanged
};

// One pass over a map.
struct Pass {
  const Pair& pair;
  bool is_fix;
  const LineArray& input;
  std::vector<Origin> origins;  // of the input's lines
  Blocks blocks;

  std::size_t section_of(const Block& block) const {
    return sectionof(pair.old, block.recognised_by);
  }
};

// The conversion of a map that is older than the current format.
struct MapRun {
  const Edition& edition;
  const Map& map;
  std::vector<Pass> passes;
  std::unique_ptr<const LineArray> between;  // the result of the first of two passes
  Result<std::string> result;
  std::vector<Origin> origins;  // of the result's lines
};

// Whether a map would be converted.
bool is_old(const Edition& edition, const Map& map);

// `edition`, which has a current version, and `map` must outlive the result.
MapRun convert(const Edition& edition, const Map& map);
