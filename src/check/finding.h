// What the checker has found: errors and warnings with their places.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

struct Finding {
  std::string file;  // as named on the command line, or below its folder
  std::size_t line;  // counted from 1
  bool error;        // else a warning
  std::string text;
  const char* rule;
};

class Findings {
public:
  // How many are kept and shown at most; the others are only counted.
  static constexpr std::size_t most = 10'000;

  // `index` is the line's, counted from 0.
  void error(const char* rule, const std::string& file, std::size_t index, std::string text) {
    add({file, index + 1, true, std::move(text), rule});
  }
  void warning(const char* rule, const std::string& file, std::size_t index, std::string text) {
    add({file, index + 1, false, std::move(text), rule});
  }

  std::size_t errors() const { return error_count; }
  std::size_t count() const { return total; }

  // One printable line for each finding, sorted by file and line, then a line with their number.
  std::string report(bool colours);

private:
  void add(Finding finding);

  std::vector<Finding> kept;
  std::size_t total = 0;
  std::size_t error_count = 0;
};

// "1 line", "2 lines".
std::string counted(std::size_t count, const std::string& noun);

// "line 5" for the index 4.
std::string line_number(std::size_t index);

// A line of a file in quotation marks; a tab is shown as "\t", and a long line is shortened.
std::string quoted(std::string_view line);

// The part of a path after its last separator.
std::string name_of(const std::string& path);
