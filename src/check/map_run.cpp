// Converts a map in memory and keeps what happened.
#include "check/map_run.h"

#include <algorithm>

namespace {

// Where the lines of a pass's result come from.
std::vector<Origin> origins_after(const Pass& pass) {
  std::vector<Origin> origins;
  auto copied = pass.origins.begin();  // up to here
  for (const Block& block : pass.blocks) {
    const auto first = pass.origins.begin() + static_cast<std::ptrdiff_t>(block.line);
    origins.insert(origins.end(), copied, first);
    copied = first + static_cast<std::ptrdiff_t>(block.count);
    const std::size_t last = block.line + std::max<std::size_t>(block.count, 1) - 1;
    for (const std::size_t i : pass.output_of(block))
      if (pass.pair.current.output[i].marker != Marker::dropped)
        origins.push_back(
            {pass.origins[std::min(pass.aligned_with(block, i), last)].line, &pass.pair, i});
  }
  origins.insert(origins.end(), copied, pass.origins.end());
  return origins;
}

// Runs one more pass over `input`, with the pair of a version. Lone CR and LF in templates and maps
// can make new line ends, so the input may have other lines than were written.
void add_pass(MapRun& run, bool fix, const std::string& version, const LineArray& input) {
  const Pair* pair = run.edition.find(fix, version);
  run.result = missing_template(run.edition.letter, true, fix, version);
  if (!pair)
    return;
  run.origins.resize(input.size(), {0});
  run.passes.push_back({*pair, input, std::move(run.origins), {}});
  Pass& pass = run.passes.back();
  run.result = (fix ? fix_pass : first_pass)(pair->old, pair->current, input, &pass.blocks);
  run.origins = run.result ? origins_after(pass) : std::vector<Origin>();
}

}  // namespace

bool is_current(const EditionTemplates& edition, const LineArray& lines) {
  const auto version = version_of(lines[1]);
  return has_number(version) && numeric_value(version) == edition.baseline.version;
}

MapRun convert(const EditionTemplates& edition, const Map& map) {
  MapRun run{edition, map, {}, nullptr, std::string(), {}, {}};
  for (std::size_t line = 0; line < map.lines.size(); ++line)
    run.origins.push_back({line});
  add_pass(run, false, std::string(version_of(map.lines[1])), map.lines);
  if (run.result && edition.letter == EditionTemplates::expansion) {
    run.between = std::make_unique<LineArray>(LineArray::split(*std::move(run.result)));
    add_pass(run, true, edition.baseline.version_text(), *run.between);
  }
  if (run.result)
    run.lines = LineArray::split(*run.result);
  run.origins.resize(run.lines.size(), {0});
  return run;
}
