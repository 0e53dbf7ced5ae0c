// What happens to a map, line by line.
#include "check/finding.h"
#include "check/map_run.h"

namespace {

// Why a line was copied that nearly began a block; empty if it did not nearly.
std::string near_match(const Pass& pass, const OldTemplate& loose, std::size_t k) {
  const OldTemplate& old = pass.pair.old;
  const auto line = pass.input[k];
  if (const std::size_t t = matchline(old, line); t > 0)  // in the first pass a count is 0
    return pass.pair.is_fix ? line_number(t, old.filename) +
                                  " recognises it, but one of the next two lines is not recognised"
                            : "";
  if (const std::size_t t = near_line(loose, line); t > 0)
    return line_number(t, old.filename) + difference(line, old.lines[t]);
  const bool title = k > 0 && !old.lines[0].empty() && line.starts_with(old.lines[0]);
  return title ? line_number(0, old.filename) + " is the title, which recognises nothing" : "";
}

// The lines `k` up to but not including `end`, which were copied.
std::string copied(const Pass& pass, const OldTemplate& loose, std::size_t k, std::size_t end) {
  std::string text;
  for (std::size_t first = k; k <= end; ++k) {
    const std::string near = k < end ? near_match(pass, loose, k) : "";
    if (k < end && near.empty())
      continue;
    if (first < k)
      text += std::to_string(first + 1) + (first + 1 < k ? " to " + std::to_string(k) : "") +
              ": copied\n";
    if (k < end)
      text += std::to_string(k + 1) + ": " + quote(pass.input[k]) + " copied: " + near + "\n";
    first = k + 1;
  }
  return text;
}

std::string block_text(const Pass& pass, const Block& block) {
  const OldTemplate& old = pass.pair.old;
  const NewTemplate& current = pass.pair.current;
  std::string out, text = std::to_string(block.line + 1) + ": " + quote(pass.input[block.line]) +
                          " begins section " + section_name(old, pass.header_of(block)) + " of " +
                          counted(block.count, "line") + ": " +
                          line_number(block.recognised_by, old.filename) + "\n";
  static_cast<void>(
      bool(rewritesection(old, current, pass.section_of(block), pass.input, block.line, out)));
  const LineArray lines = LineArray::split(std::move(out));
  std::size_t written = 0;
  for (const std::size_t i : pass.output_of(block)) {
    const Marker marker = current.output[i].marker;
    text += "    " + (marker == Marker::dropped ? "nothing" : quote(lines[written++])) + ": " +
            line_number(i, current.filename) +
            (has_value(marker) ? ", value of " + line_number(pass.source_of(block, i)) : "") + "\n";
  }
  return text;
}

}  // namespace

std::string trace(const MapRun& run) {
  std::string text;
  for (const Pass& pass : run.passes) {
    text += (pass.pair.is_fix ? "The result" : run.map.path) + ", by " +
            name_of(pass.pair.old.filename) + " and " + name_of(pass.pair.current.filename) + ":\n";
    const OldTemplate loose = loose_template(pass.pair.old);
    std::size_t k = 0;
    for (const Block& block : pass.blocks) {
      text += copied(pass, loose, k, block.line) + block_text(pass, block);
      k = block.line + block.count;
    }
    text += copied(pass, loose, k, pass.input.size());
  }
  return run.result ? text : text + "It cannot be converted: " + run.result.failure().reason + "\n";
}
