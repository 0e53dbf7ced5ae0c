// The rules: what there is to find, in one table.
#pragma once

#include <span>
#include <string_view>

struct EditionTemplates;
struct Pair;
struct MapRun;
class Report;

// What finds it: in an edition's files, in a pair of which both files are there and have lines, in
// the conversion of a map that succeeded.
using EditionRule = void(const EditionTemplates&, const Report&);
using PairRule = void(const EditionTemplates&, const Pair&, const Report&);
using MapRule = void(const MapRun&, const Report&);

// An error damages maps or ends the program; a warning may be meant as it is.
enum class Severity { error, warning };

struct Rule {
  const char* name;  // docs/templates.md has a section of that name
  Severity severity;
  const char* text;  // what it finds, in one line

  // What finds it; where there is nothing, the checker itself does, in maps.
  EditionRule* of_edition = nullptr;
  PairRule* of_pair = nullptr;
  MapRule* of_map = nullptr;

  bool needs_maps() const { return of_map || (!of_edition && !of_pair); }
};

std::span<const Rule> all_rules();

// Null when there is no rule of that name.
const Rule* find_rule(std::string_view name);

// What docs/templates.md says about a rule.
std::string_view explain(const Rule& rule);

EditionRule line_ends, odd_bytes, missing_pair, bad_version, version_gap, no_version, version_line,
    forgotten_word;
PairRule section_count, bad_count, count_past_end, count_too_small, empty_line, shadowed,
    odd_recognition, dead_marker, value_behind, unknown_output, output_order;
MapRule unknown_line, line_order, cut_value, other_value, lost_line, past_map_end;
