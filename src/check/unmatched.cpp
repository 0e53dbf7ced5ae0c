// Recognition lines that match nothing in any map.
#include "check/unmatched.h"

#include "check/sections.h"

#include <algorithm>

void UnmatchedLines::add(const MapRun& run) {
  for (const auto& [pair, is_fix, input, origins, blocks, written] : run.passes) {
    const auto [at, added] = pairs.try_emplace(&pair);
    auto& unmatched = at->second;
    for (std::size_t i = 0; added && i < pair.old.lines.size(); ++i)
      if (recognises(pair.old, i))
        unmatched[i];
    for (const Block& block : blocks)
      for (std::size_t d = 0; d < (is_fix ? 3 : 1) && !unmatched.empty(); ++d)
        unmatched.erase(matchline(pair.old, input[block.line + d]));
    const LooseIndex index(pair.old);
    for (std::size_t k = 0; k < input.size() && !unmatched.empty(); ++k)
      if (const auto found = unmatched.find(index.find(input[k]));
          found != unmatched.end() && found->second.empty() && matchline(pair.old, input[k]) == 0)
        found->second = ": " + line_number(origins[k].line) + " of " + name_of(run.map.path) +
                        " has other " + difference(input[k], pair.old.lines[found->first]) + ": " +
                        quoted(input[k]);
  }
}

void UnmatchedLines::report(const Report& report) const {
  for (const auto& [pair, unmatched] : pairs)
    for (const auto& [line, reason] : unmatched)
      report({pair->old.filename, line},
             quoted(pair->old.lines[line]) + " recognises no line of the given maps" + reason);
}

bool UnmatchedLines::knows(const std::string& file) const {
  return std::ranges::any_of(pairs, [&](const auto& pair) {
    return pair.first->old.filename == file || pair.first->current.filename == file;
  });
}
