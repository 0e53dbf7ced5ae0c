// The rules in one table, and what the checker has found by them.
#pragma once

#include "engine/line_array.h"

#include <map>
#include <set>
#include <span>

struct EditionTemplates;
struct Pair;
struct MapRun;
struct Report;

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
  const char* text;  // of one line

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

// A line of a file. Files are as named on the command line, or below its folder.
struct Place {
  std::string file;
  std::size_t line;        // counted from 0
  std::size_t column = 0;  // counted from 1; 0 when it is not known
};

struct Finding {
  const Rule* rule;
  Place place;
  std::string text;
  Place seen;                  // in the first map that shows it
  std::set<std::string> maps;  // that show it
};

class Findings {
public:
  // Reads the remarks of a file, "= check: RULE", by which its writer silences findings: those at
  // the line below, those in the whole section below where that is a header, and all in a file
  // without headers.
  void read_remarks(const std::string& file, const LineArray& lines);

  // Leaves out what is silenced, and finds the remarks that silence nothing. `checked` are the
  // files that maps were checked with.
  void heed_remarks(const std::set<std::string>& checked);

  std::size_t count(Severity severity) const;

  // One printable line for each finding, sorted by file and line; and "1 error, 2 warnings".
  std::string report(bool colours) const;
  std::string summary() const;

private:
  friend struct Report;
  struct Remark {
    Place place;
    std::string rule;
    std::size_t begin, end;  // the lines in which it silences
    bool used = false;
  };

  std::map<std::string, Finding> kept;  // by their keys
  std::vector<Remark> remarks;
  std::size_t silenced = 0;
};

// Takes the findings of one rule: what is wrong at a place and, if a map shows it, where in the
// first such map. That is reported once for all maps: for each place of a template, and for each
// text, or key if it is given, about a line of the map.
struct Report {
  Findings& findings;
  const Rule* rule;

  void operator()(const Place& place, const std::string& text, const Place& seen = {"", 0},
                  const std::string& key = "") const;
};

// "1 line", "2 lines".
std::string counted(std::size_t count, const std::string& noun);

// "line 5" for the index 4.
std::string line_number(std::size_t index);

// A line of a file in quotation marks and printable; a long line is shortened.
std::string quote(std::string_view line);

// The part of a path after its last separator.
std::string name_of(const std::string& path);
