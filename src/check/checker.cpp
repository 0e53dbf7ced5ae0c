// Checks templates, and the conversion of maps by them.
#include "check/checker.h"

#include "check/sections.h"
#include "engine/numbers.h"

#include <algorithm>
#include <utility>

Checker::Checker(std::vector<Edition> editions_in) : editions(std::move(editions_in)) {
  for (const Edition& edition : editions) {
    for (const auto& [path, lines] : edition.files())
      findings.read_remarks(path, *lines);
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

// A first line that only old templates have is the baseline's mistake.
const Edition* Checker::edition_of(const Map& map) {
  const auto title = map.lines[0];
  std::vector<const Edition*> same, similar;
  for (const Edition& edition : editions) {
    if (edition.version && edition.baseline && edition.baseline->lines[0] == title)
      same.push_back(&edition);
    else if (edition.version && std::ranges::any_of(edition.pairs, [&](const auto& pair) {
               return pair.second.old.lines[0] == title;
             }))
      similar.push_back(&edition);
  }
  if (same.size() == 1)
    return same[0];
  const Report report(findings, "unknown-edition");
  const Place seen{map.path, 0};
  if (same.empty() && similar.size() == 1) {
    report({similar[0]->baseline_file, 0},
           "its maps begin with " + quoted(title) + ", as old templates do", seen);
    return similar[0];
  }
  report(seen,
         quoted(title) + " is the first line of " +
             (same.empty() ? "no baseline: it is not checked"
                           : "more than one baseline: name the edition with --edition"),
         seen, std::string(title) + " ");
  return nullptr;
}

// Reports a map that does not become one of the current version; whether it was converted.
bool Checker::check_current(const MapRun& run) {
  const Report report(findings, "not-current");
  const Place seen{run.map.path, 1};
  if (!run.result) {
    const auto& [path, action, reason, missing] = run.result.failure();
    report(seen, "it cannot be converted: " + quoted(name_of(path)) + ": " + reason, seen, reason);
  } else if (!is_current(run.edition, run.lines)) {
    report(seen,
           "its version is " + quoted(version_of(run.lines[1])) + " afterwards, not " +
               number_text(run.edition.version.value_or(0)),
           seen, "version " + std::string(version_of(run.map.lines[1])));
  }
  return bool(run.result);
}

std::optional<MapRun> Checker::add(const Map& map) {
  const Place start{map.path, 0};
  if (is_one_line(map.lines.text()))
    Report(findings, "line-ends")(start, one_line_reason(map.lines.text()), start, "map");
  if (map.lines[0].starts_with(byte_order_mark))
    Report(findings, "odd-bytes")(start, "it begins with a byte order mark", start, "map");
  const Edition* edition = edition_of(map);
  if (edition && map.lines.size() < 2)
    Report(findings, "not-current")(start, "it has no second line", start, "line");
  if (!edition || !is_old(*edition, map.lines)) {
    ++(!edition ? unknown : map.lines.size() < 2 ? failed : current);
    return std::nullopt;
  }
  MapRun run = convert(*edition, map);
  ++(check_current(run) ? converted : failed);
  if (run.result)
    unmatched.add(run);
  for (const Rule& rule : all_rules())
    if (rule.of_map && run.result)
      rule.of_map(run, {findings, rule.name});
  return run;
}

std::string Checker::subject() const {
  std::size_t pairs = 0;
  for (const Edition& edition : editions)
    pairs += edition.all_pairs().size();
  std::string text = counted(pairs, "pair") + "; " +
                     counted(converted + failed + current + unknown, "map"),
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
  unmatched.report({findings, "unmatched"});
  findings.check_remarks([&](const std::string& file) { return unmatched.knows(file); });
  return findings.report(colours) + subject() + "; " + findings.summary() + "\n";
}
