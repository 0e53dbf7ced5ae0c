// Checks templates, and the conversion of maps by them.
#include "check/checker.h"

#include <algorithm>
#include <utility>

namespace {

// What keeps a map from being one of the current version; empty if nothing does.
std::string fault_of(const MapRun& run) {
  if (!run.result)
    return "it cannot be converted: " + quote(name_of(run.result.failure().path)) + ": " +
           run.result.failure().reason;
  return is_current(run.edition, run.lines)
             ? ""
             : "its version is " + quote(version_of(run.lines[1])) + " afterwards, not " +
                   run.edition.baseline.version_text();
}

}  // namespace

Checker::Checker(std::vector<EditionTemplates> editions_in) : editions(std::move(editions_in)) {
  for (const EditionTemplates& edition : editions) {
    check_files(edition, findings);
    for (const Pair& pair : edition.pairs)
      if (pair.is_readable())
        check_pair(edition, pair, findings);
  }
}

// A first line that only old templates have, or that two baselines have, is a baseline's mistake.
const EditionTemplates* Checker::edition_of(const Map& map) {
  const auto title = map.lines[0];
  const auto has_title = [&](const Pair& pair) { return pair.old.lines[0] == title; };
  std::vector<const EditionTemplates*> same, similar;
  for (const EditionTemplates& edition : editions)
    if (edition.baseline.version && edition.baseline.lines[0] == title)
      same.push_back(&edition);
    else if (edition.baseline.version && std::ranges::any_of(edition.pairs, has_title))
      similar.push_back(&edition);
  const Place seen{map.path};
  const auto& found = same.empty() ? similar : same;
  const auto report = [&](const std::string& file, const std::string& text) {
    findings.add("unknown-edition", {file}, text, seen);
  };
  if (same.size() > 1)
    report(same[1]->baseline.filename, "it begins like " + name_of(same[0]->baseline.filename) +
                                           ": name the edition of their maps with --edition");
  else if (found.size() != 1)
    report(map.path, quote(title) + " is the first line of no baseline: it is not checked");
  else if (same.empty())
    report(found[0]->baseline.filename,
           "its maps begin with " + quote(title) + ", as old templates do");
  return found.size() == 1 ? found[0] : nullptr;
}

std::optional<MapRun> Checker::add(const Map& map) {
  const Place start{map.path}, second{map.path, 1};
  if (const auto fault = one_line_fault(map.lines); !fault.empty())
    findings.add("line-ends", start, fault, start);
  if (map.lines[0].starts_with(byte_order_mark))
    findings.add("odd-bytes", start, "it begins with a byte order mark", start);
  const EditionTemplates* edition = edition_of(map);
  const bool cut = edition && map.lines.size() < 2;
  if (cut)
    findings.add("not-current", start, "it has no second line", start);
  if (!edition || cut || numeric_value(version_of(map.lines[1])) >= edition->baseline.version) {
    ++(!edition ? unknown : cut ? failed : current);
    return std::nullopt;
  }
  MapRun run = convert(*edition, map);
  if (const auto fault = fault_of(run); !fault.empty())
    findings.add("not-current", second, fault, second);
  ++(run.result ? converted : failed);
  if (run.result) {
    note_matches(run);
    check_map(run, findings);
  }
  return run;
}

void Checker::note_matches(const MapRun& run) {
  for (const Pass& pass : run.passes) {
    const OldTemplate& old = pass.pair.old;
    const auto [at, added] = unmatched.try_emplace(&pass.pair);
    auto& lines = at->second;
    for (std::size_t i = 0; added && i < old.lines.size(); ++i)
      if (recognises(old, i))
        lines[i];
    for (const Block& block : pass.blocks)
      for (std::size_t d = 0; d < (pass.pair.is_fix ? 3 : 1) && !lines.empty(); ++d)
        lines.erase(matchline(old, pass.input[block.line + d]));
    const OldTemplate loose = loose_template(old);
    for (std::size_t k = 0; k < pass.input.size() && !lines.empty(); ++k)
      if (const auto found = lines.find(near_line(loose, pass.input[k]));
          found != lines.end() && found->second.empty() && matchline(old, pass.input[k]) == 0)
        found->second = ": " + line_number(pass.origins[k].line, run.map.path) +
                        difference(pass.input[k], old.lines[found->first]) + ": " +
                        quote(pass.input[k]);
  }
}

std::string Checker::report(bool colours) {
  std::set<std::string> checked;
  for (const auto& [pair, lines] : unmatched) {
    checked.insert({pair->old.filename, pair->current.filename});
    for (const auto& [line, near] : lines)
      findings.add("unmatched", {pair->old.filename, line},
                   quote(pair->old.lines[line]) + " recognises no line of the given maps" + near);
  }
  findings.heed_remarks(checked);
  std::size_t pairs = 0, maps = 0;
  for (const EditionTemplates& edition : editions)
    pairs += edition.pairs.size();
  std::string list;
  for (const auto& [count, what] : {std::pair(converted, " converted"),
                                    {failed, " not converted"},
                                    {current, " current"},
                                    {unknown, " of no known edition"}})
    if (count > 0) {
      list += (maps > 0 ? ", " : ": ") + std::to_string(count) + what;
      maps += count;
    }
  const std::size_t unused = maps > 0 ? pairs - unmatched.size() : 0;
  return findings.report(colours) + counted(pairs, "pair") +
         (unused > 0 ? ", " + std::to_string(unused) + " without a map" : "") + "; " +
         counted(maps, "map") + list + "; " + findings.summary() + "\n";
}
