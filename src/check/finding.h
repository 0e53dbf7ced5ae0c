// The rules, and what the checker has found by them.
#pragma once

#include "check/rules.h"
#include "engine/templates.h"

#include <algorithm>
#include <map>
#include <set>

// Null when there is no rule of that name.
constexpr const Rule* find_rule(std::string_view name) {
  const auto found = std::ranges::find(rule_table, name, &Rule::name);
  return found == std::end(rule_table) ? nullptr : found;
}

// A rule by its name; it does not compile when there is none.
struct KnownRule {
  consteval KnownRule(const char* name) : rule(*find_rule(name)) {}
  const Rule& rule;
};

// What docs/templates.md says about a rule.
std::string_view explain(const Rule& rule);

// A line of a file. Files are as named on the command line, or below its folder.
struct Place {
  std::string file;
  std::size_t line = 0;    // counted from 0
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
  void read_remarks(const Template& file);

  // Adds what a rule finds: what is wrong at a place and, if a map shows it, where in the first
  // such map. That is reported once for all maps: for each place of a template, and for each text,
  // or key if it is given, about a line of the map.
  void add(KnownRule known, const Place& place, const std::string& text, const Place& seen = {},
           const std::string& key = "");

  // Leaves out what is silenced, and finds the remarks that silence nothing. `checked` are the
  // files that maps were checked with.
  void heed_remarks(const std::set<std::string>& checked);

  std::size_t count(Severity severity) const;

  // One printable line for each finding, sorted by file and line; and "1 error, 2 warnings".
  std::string report(bool colours) const;
  std::string summary() const;

private:
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

// "1 line", "2 lines".
std::string counted(std::size_t count, const std::string& noun);

// "line 5" for the index 4, or "line 5 of NAME" for a path.
std::string line_number(std::size_t index, const std::string& path = "");

// A line of a file in quotation marks and printable; a long line is shortened.
std::string quote(std::string_view line);

// The part of a path after its last separator.
std::string name_of(const std::string& path);
