// The command line of vora-template-check.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

struct Options {
  bool help = false;
  bool version = false;
  bool diff = false;
  bool strict = false;
  std::optional<char> edition;
  std::string trace;               // a map
  std::string explain;             // a rule
  std::vector<std::string> names;  // the folder, then the maps
};

extern const char* const usage;
extern const char* const help;

// The options, or what is wrong with the arguments.
std::variant<Options, std::string> parse_options(const std::vector<std::string>& arguments);
