// What the rules ask about the lines of templates.
#pragma once

#include "check/editions.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

constexpr bool is_aligned(Marker marker) {
  return marker == Marker::last_character || marker == Marker::last_two;
}

bool is_blank(char c);
bool is_digit(char c);
bool is_letter(char c);  // so is every byte beyond ASCII

std::string lowered(std::string_view line);  // ASCII alone

constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

// Whether a text counts as one line because it has no CR LF, and why it has none.
bool is_one_line(std::string_view text);
std::string one_line_reason(std::string_view text);

// Whether a line is its writer's own remark: it begins with "=" and is no header.
bool is_remark(std::string_view line);

// Without the blanks and tabs that it begins with; and without those at its end, too.
std::string_view unindented(std::string_view line);
std::string_view stripped(std::string_view line);

// What stands before the first blank, tab, "#" or "&" of a line, its indentation left out.
std::string_view first_word(std::string_view line);

// The name of a section, in quotes: what stands before the "$" of its header, without the "=".
std::string section_name(std::string_view header);

// Whether line `i` is there to recognise lines of a map: not the title, a header, a remark or
// empty.
bool recognises(const OldTemplate& old, std::size_t i);

// Finds recognition lines whatever the case of letters, the tabs and the blanks: every run of them
// counts as one blank, and at the start of a line as nothing.
class LooseIndex {
public:
  explicit LooseIndex(const OldTemplate& old);

  // The last recognition line that `line` begins with; 0 when there is none.
  std::size_t find(std::string_view line) const;

private:
  std::vector<std::string> texts{""};
  std::vector<std::size_t> lines{0};  // of the template, for each text
  PrefixIndex index;
};

// In what `line` differs from a recognition line that was found for it.
std::string difference(std::string_view line, std::string_view recognition);

// The lines `begin` up to but not including `end`.
struct Lines {
  std::size_t begin, end;
};

// The lines behind the header of section `s`, up to the next header or the file's end, and those of
// them that its count makes its output; none if there is no such section.
Lines body_of(const NewTemplate& current, std::size_t s);
Lines output_of(const NewTemplate& current, std::size_t s);
