// Structure templates: what the program knows about how a map of an older format version differs
// from the current one. `docs/templates.md` describes the files.
#pragma once

#include "engine/line_array.h"
#include "engine/radix_tree.h"
#include "platform/result.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What the end of an output line asks for.
enum class Marker {
  none,            // the line as it stands
  last_character,  // " #": the last character of the aligned map line
  last_two,        // "##": its last two characters
  rest,            // " &": the block's first line from a position on
  dropped,         // any other "#" or "&" at the end: no line at all
};

struct OutputLine {
  std::string_view text;  // without what the marker replaces
  Marker marker;
};

// What both kinds of template have. A file that is missing or cannot be read counts as 11 empty
// lines, and `failure` says why.
struct Template {
  std::string filename;
  LineArray lines;
  std::optional<Failure> failure;
  std::vector<long long> counts;  // the whole part of each header's count
};

// An old-format template and what it recognises.
struct OldTemplate : Template {
  std::vector<std::size_t> oldheads;    // the lines of its section headers, or a single 0
  RadixTree index;                      // its lines by their numbers
  std::vector<std::uint32_t> sections;  // of its lines: see `sectionof`
};

// A new-format template and what it writes.
struct NewTemplate : Template {
  std::vector<std::size_t> newheads;  // the lines of its section headers, or a single 0
  std::vector<OutputLine> output;     // one for each line of the file
};

// Whether a line is a section header, and the text that its count is the number of.
bool is_header(std::string_view line);
std::string_view count_text(std::string_view header);

// A template is made from its text, or from the failure to read it.
OldTemplate index_old(std::string filename, Result<std::string> text);
NewTemplate index_new(std::string filename, Result<std::string> text);

// The number of the last line of the template that `line` begins with; 0 when there is none, or
// only line 0.
std::size_t matchline(const OldTemplate& oldtemplate, std::string_view line);

// The section of a recognition line: the last one whose header stands before line `t`, else 0.
std::size_t sectionof(const OldTemplate& oldtemplate, std::size_t t);

// The format version at the end of the second line of a map or of the baseline, as text: the last
// two characters, or only the last when a space stands before it.
std::string_view version_of(std::string_view second_line);
