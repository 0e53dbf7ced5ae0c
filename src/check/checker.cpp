// Checks templates, and the conversion of maps by them.
#include "check/checker.h"

#include "engine/numbers.h"

#include <algorithm>
#include <utility>

Checker::Checker(std::vector<EditionTemplates> editions_in) : editions(std::move(editions_in)) {
  for (const EditionTemplates& edition : editions) {
    for (const Template* file : edition.files())
      findings.read_remarks(file->filename, file->lines);
    for (const Rule& rule : all_rules()) {
      const Report report(findings, rule.name);
      if (rule.of_edition)
        rule.of_edition(edition, report);
      for (const Pair* pair : edition.all_pairs())
        if (rule.of_pair && pair->is_readable())
          rule.of_pair(edition, *pair, report);
    }
  }
}

// A first line that only old templates have, or that two baselines have, is a baseline's mistake.
const EditionTemplates* Checker::edition_of(const Map& map) {
  const auto title = map.lines[0];
  const auto has_title = [&](const auto& pair) { return pair.second.old.lines[0] == title; };
  std::vector<const EditionTemplates*> same, similar;
  for (const EditionTemplates& edition : editions)
    if (edition.baseline.version && edition.baseline.lines[0] == title)
      same.push_back(&edition);
    else if (edition.baseline.version && std::ranges::any_of(edition.pairs, has_title))
      similar.push_back(&edition);
  const Report report(findings, "unknown-edition");
  const Place seen{map.path, 0};
  if (same.size() > 1)
    report({same[1]->baseline.filename, 0},
           "it begins like " + name_of(same[0]->baseline.filename) +
               ": name the edition of their maps with --edition",
           seen);
  else if (same.empty() && similar.size() == 1)
    report({similar[0]->baseline.filename, 0},
           "its maps begin with " + quote(title) + ", as old templates do", seen);
  else if (same.empty())
    report(seen, quote(title) + " is the first line of no baseline: it is not checked", seen,
           std::string(title) + " ");
  return same.size() == 1 ? same[0] : same.empty() && similar.size() == 1 ? similar[0] : nullptr;
}

// Reports a map that does not become one of the current version; whether it was converted.
bool Checker::check_current(const MapRun& run) {
  const Report report(findings, "not-current");
  const Place seen{run.map.path, 1};
  if (!run.result) {
    const auto& [path, action, reason, missing] = run.result.failure();
    report(seen, "it cannot be converted: " + quote(name_of(path)) + ": " + reason, seen, reason);
  } else if (!is_current(run.edition, run.lines)) {
    report(seen,
           "its version is " + quote(version_of(run.lines[1])) + " afterwards, not " +
               number_text(run.edition.baseline.version.value_or(0)),
           seen, "version " + std::string(version_of(run.map.lines[1])));
  }
  return bool(run.result);
}

std::optional<MapRun> Checker::add(const Map& map) {
  const Place start{map.path, 0};
  if (const auto fault = one_line_fault(map.lines.text()); !fault.empty())
    Report(findings, "line-ends")(start, fault, start, "map");
  if (map.lines[0].starts_with(byte_order_mark))
    Report(findings, "odd-bytes")(start, "it begins with a byte order mark", start, "map");
  const EditionTemplates* edition = edition_of(map);
  if (edition && map.lines.size() < 2)
    Report(findings, "not-current")(start, "it has no second line", start, "line");
  if (!edition || !is_old(*edition, map.lines)) {
    ++(!edition ? unknown : map.lines.size() < 2 ? failed : current);
    return std::nullopt;
  }
  MapRun run = convert(*edition, map);
  ++(check_current(run) ? converted : failed);
  if (run.result)
    note_matches(run);
  for (const Rule& rule : all_rules())
    if (rule.of_map && run.result)
      rule.of_map(run, {findings, rule.name});
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
      for (std::size_t d = 0; d < (pass.is_fix ? 3 : 1) && !lines.empty(); ++d)
        lines.erase(matchline(old, pass.input[block.line + d]));
    const OldTemplate loose = loose_template(old);
    for (std::size_t k = 0; k < pass.input.size() && !lines.empty(); ++k)
      if (const auto found = lines.find(near_line(loose, pass.input[k]));
          found != lines.end() && found->second.empty() && matchline(old, pass.input[k]) == 0)
        found->second = ": " + line_number(pass.origins[k].line) + " of " + name_of(run.map.path) +
                        " has other " + difference(pass.input[k], old.lines[found->first]) + ": " +
                        quote(pass.input[k]);
  }
}

void Checker::report_unmatched() {
  const Report report(findings, "unmatched");
  for (const auto& [pair, lines] : unmatched)
    for (const auto& [line, near] : lines)
      report({pair->old.filename, line},
             quote(pair->old.lines[line]) + " recognises no line of the given maps" + near);
}

std::string Checker::subject() const {
  std::size_t pairs = 0;
  for (const EditionTemplates& edition : editions)
    pairs += edition.all_pairs().size();
  const std::size_t maps = converted + failed + current + unknown,
                    unused = maps > 0 ? pairs - unmatched.size() : 0;
  std::string text = counted(pairs, "pair") +
                     (unused > 0 ? ", " + std::to_string(unused) + " without a map" : "") + "; " +
                     counted(maps, "map"),
              separator = ": ";
  for (const auto& [count, what] : {std::pair(converted, " converted"),
                                    {failed, " not converted"},
                                    {current, " current"},
                                    {unknown, " of no known edition"}})
    if (count > 0)
      text += std::exchange(separator, ", ") + std::to_string(count) + what;
  return text;
}

std::string Checker::report(bool colours) {
  report_unmatched();
  findings.heed_remarks([&](const std::string& file) {
    return std::ranges::any_of(unmatched, [&](const auto& pair) {
      return pair.first->old.filename == file || pair.first->current.filename == file;
    });
  });
  return findings.report(colours) + subject() + "; " + findings.summary() + "\n";
}
