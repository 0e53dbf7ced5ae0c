// Checks templates, and the conversion of maps by them.
#include "check/checker.h"

#include "check/sections.h"
#include "check/template_rules.h"
#include "check/unified_diff.h"

#include <algorithm>

namespace {

void check_templates(const Edition& edition, Findings& findings) {
  for (const auto rule : {line_ends, missing_pair, no_version})
    rule(edition, findings);
  for (const Pairs* pairs : {&edition.pairs, &edition.fixes})
    for (const auto& [version, pair] : *pairs)
      for (const auto rule : {section_count, section_order, count_past_end, count_too_small,
                              bad_count, empty_line, shadowed, dead_marker, block_overlap})
        if (is_readable(pair))
          rule(edition, pair, findings);
}

void check_map(const MapRun& run, Findings& findings) {
  not_current(run, findings);
  for (const auto rule : {cut_value, past_map_end, swallowed_block, not_stable})
    if (run.result)
      rule(run, findings);
}

}  // namespace

Checker::Checker(std::vector<Edition> editions_in) : editions(std::move(editions_in)) {
  for (const Edition& edition : editions)
    check_templates(edition, findings);
}

const Edition* Checker::edition_of(const Map& map) const {
  const auto is_its = [&](const Edition& edition) {
    return editions.size() == 1 ||
           (edition.baseline_lines && (*edition.baseline_lines)[0] == map.lines[0]);
  };
  if (std::count_if(editions.begin(), editions.end(), is_its) != 1)
    return nullptr;
  return &*std::find_if(editions.begin(), editions.end(), is_its);
}

std::string Checker::add(const Map& map, bool diff) {
  const Edition* edition = edition_of(map);
  if (!edition) {
    findings.error("not-current", map.path, 0,
                   "its first line is not that of one baseline, so that its edition is unknown: "
                   "name it with --edition");
    return "";
  }
  if (map.lines.size() < 2)
    findings.error("not-current", map.path, 0, "it has no second line, so the program skips it");
  if (!is_old(*edition, map))
    return "";
  const MapRun run = convert(*edition, map);
  check_map(run, findings);
  if (run.result)
    unmatched.add(run);
  return diff && run.result ? unified_diff(run) : "";
}

Findings Checker::finish() {
  unmatched.report(findings);
  return std::move(findings);
}
