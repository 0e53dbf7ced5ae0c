// Converts a map in memory and keeps what happened.
#include "check/map_run.h"

#include "check/sections.h"
#include "engine/numbers.h"

#include <algorithm>

namespace {

Failure no_templates(const Edition& edition, const std::string& version, bool fix) {
  return {template_name(edition.letter, true, fix, version), "read it", "the file is missing",
          Failure::Kind::missing};
}

// Appends where the lines come from that a block became.
void add_block(const Pass& pass, const Block& block, std::vector<Origin>& origins) {
  const auto [begin, end] = output_of(pass.pair.current, pass.section_of(block));
  const std::size_t last = block.line + std::max<std::size_t>(block.count, 1) - 1;
  for (std::size_t i = begin; i < end; ++i)
    if (pass.pair.current.output[i].marker != Marker::dropped)
      origins.push_back({pass.origins[std::min(block.line + (i - begin), last)].line, false});
}

// Where the lines of a pass's result come from.
std::vector<Origin> origins_after(const Pass& pass) {
  std::vector<Origin> origins;
  std::size_t k = 0;
  const auto copy_until = [&](std::size_t end) {
    for (; k < end; ++k)
      origins.push_back(pass.origins[k]);
  };
  for (const Block& block : pass.blocks) {
    copy_until(block.line);
    add_block(pass, block, origins);
    k = block.line + block.count;
  }
  copy_until(pass.input.size());
  return origins;
}

// Runs one more pass over `input`. Lone CR and LF in templates and maps can make new line ends, so
// the input may have other lines than were written.
void add_pass(MapRun& run, const Pair& pair, bool is_fix, const LineArray& input) {
  run.origins.resize(input.size(), {0, false});
  Pass pass{pair, is_fix, input, std::move(run.origins), {}};
  run.result = (is_fix ? fix_pass : first_pass)(pair.old, pair.current, input, &pass.blocks);
  run.origins = run.result ? origins_after(pass) : std::vector<Origin>();
  run.passes.push_back(std::move(pass));
}

}  // namespace

bool is_old(const Edition& edition, const Map& map) {
  return edition.version && map.lines.size() > 1 &&
         numeric_value(version_of(map.lines[1])) < *edition.version;
}

MapRun convert(const Edition& edition, const Map& map) {
  const std::string version(version_of(map.lines[1]));
  MapRun run{edition, map, {}, nullptr, no_templates(edition, version, false), {}};
  for (std::size_t line = 0; line < map.lines.size(); ++line)
    run.origins.push_back({line, true});
  const auto pair = edition.pairs.find(version);
  if (pair == edition.pairs.end())
    return run;
  add_pass(run, pair->second, false, map.lines);
  if (!run.result || edition.letter != Edition::expansion)
    return run;
  run.between = std::make_unique<LineArray>(LineArray::split(*std::move(run.result)));
  run.result = no_templates(edition, number_text(*edition.version), true);
  if (edition.fix())
    add_pass(run, *edition.fix(), true, *run.between);
  return run;
}
