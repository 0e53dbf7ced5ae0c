// The rules: what there is to find, in one table.
#include "check/finding.h"
#include "check/rule_pages.h"

#include <algorithm>

namespace {

constexpr auto error = Severity::error, warning = Severity::warning;
constexpr auto none = nullptr;

// In the order of docs/templates.md: of files, of pairs, of maps, of remarks.
constexpr Rule table[] = {
    {"line-ends", error, "a file without CR LF, such as one in UTF-16", line_ends},
    {"odd-bytes", warning, "a byte order mark, or a CR or LF that ends no line", odd_bytes},
    {"missing-pair", error, "a template or the baseline is missing", missing_pair},
    {"bad-version", error, "the baseline's second line does not end in a version", bad_version},
    {"version-gap", warning, "a version without a pair, or a pair that no map needs", version_gap},
    {"no-version", error, "converted maps would not be of the current version", no_version},
    {"version-line", warning, "no line recognises the baseline's version line", version_line},
    {"forgotten-word", warning, "an older pair knows nothing of a line that is gone",
     forgotten_word},
    {"section-count", error, "the two templates have different numbers of sections", none,
     section_count},
    {"bad-count", error, "a count is missing, or a new one is below 1", none, bad_count},
    {"count-past-end", error, "a new count runs past the next header or the file's end", none,
     count_past_end},
    {"count-too-small", warning, "lines of output that no count includes", none, count_too_small},
    {"empty-line", error, "an empty line in an old template", none, empty_line},
    {"shadowed", error, "a recognition line that never wins", none, shadowed},
    {"odd-recognition", warning, "a recognition line unlike the baseline", none, odd_recognition},
    {"dead-marker", warning, "a marker that writes nothing, or is written itself", none,
     dead_marker},
    {"value-behind", warning, "a value that is taken from behind the block", none, value_behind},
    {"unknown-line", warning, "a line that begins like no line of the baseline", none,
     unknown_output, unknown_line},
    {"output-order", warning, "lines that do not follow each other in the baseline", none,
     output_order, line_order},
    {"unknown-edition", warning, "a map that begins like no baseline"},
    {"not-current", error, "a map that does not become one of the current version"},
    {"unmatched", warning, "a recognition line that recognises nothing in any of the maps"},
    {"cut-value", warning, "a value that its marker cuts", none, none, cut_value},
    {"other-value", warning, "a value that is taken from another line", none, none, other_value},
    {"lost-line", warning, "a line of a block, or its value, that is not written", none, none,
     lost_line},
    {"past-map-end", error, "a block that runs past the map's end", none, none, past_map_end},
    {"needless-remark", warning, "a remark that silences nothing"},
};

}  // namespace

std::span<const Rule> all_rules() { return table; }

const Rule* find_rule(std::string_view name) {
  const auto found = std::ranges::find(table, name, &Rule::name);
  return found == std::end(table) ? nullptr : found;
}

std::string_view explain(const Rule& rule) {
  const std::string title = "### " + std::string(rule.name) + "\n\n";
  const std::string_view pages = rule_pages;
  const auto page = pages.substr(pages.find(title) + title.size());
  return page.substr(0, page.find("\n```"));
}
