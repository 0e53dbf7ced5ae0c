// Converts a map in memory and keeps what happened.
#pragma once

#include "check/edition_templates.h"
#include "engine/passes.h"

struct Map {
  std::string path;  // as named on the command line
  LineArray lines;
};

// Where a line of a result comes from.
struct Origin {
  std::size_t line;              // of the map
  const Pair* writer = nullptr;  // the last that wrote it; null where it is that line, unchanged
  std::size_t output = 0;        // the line of the writer's new template
};

// One pass over a map.
struct Pass {
  const Pair& pair;
  const LineArray& input;
  std::vector<Origin> origins;  // of the input's lines
  Blocks blocks;

  std::size_t section_of(const Block& block) const {
    return sectionof(pair.old, block.recognised_by);
  }
  std::size_t header_of(const Block& block) const { return pair.old.oldheads[section_of(block)]; }

  // The lines of the new template that were written for a block.
  LineRange output_of(const Block& block) const {
    return ::output_of(pair.current, section_of(block));
  }

  // The map's line beside line `i` of the new template, and the one whose value that line copies.
  std::size_t aligned_with(const Block& block, std::size_t i) const {
    return block.line + i - *output_of(block).begin();
  }
  std::size_t source_of(const Block& block, std::size_t i) const {
    return pair.current.output[i].marker == Marker::rest ? block.line : aligned_with(block, i);
  }
};

// The conversion of a map that is older than the current format.
struct MapRun {
  const EditionTemplates& edition;
  const Map& map;
  std::vector<Pass> passes;
  std::unique_ptr<const LineArray> between;  // the result of the first of two passes
  Result<std::string> result;
  LineArray lines;              // of the result
  std::vector<Origin> origins;  // of these lines
};

// Whether a map of these lines is of the current version.
bool is_current(const EditionTemplates& edition, const LineArray& lines);

// `edition`, which has a current version, and `map` must outlive the result.
MapRun convert(const EditionTemplates& edition, const Map& map);

// What happens to each line of the map: for each pass which section it became, what was written
// from where, and for lines that were copied the recognition line that nearly matched. Other copied
// lines are only counted.
std::string trace(const MapRun& run);

// The changes of a conversion that succeeded, as a unified diff with three lines of context; empty
// if there are none.
std::string unified_diff(const MapRun& run);
