// What the rules ask about the lines of templates.
#pragma once

#include "engine/templates.h"

#include <ranges>

constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

// Whether the marker takes its value from the aligned line; and whether it takes one at all.
constexpr bool is_aligned(Marker marker) {
  return marker == Marker::last_character || marker == Marker::last_two;
}
constexpr bool has_value(Marker marker) { return is_aligned(marker) || marker == Marker::rest; }

constexpr bool is_blank(char c) { return c == ' ' || c == '\t'; }
constexpr bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_letter(char c);  // so is every byte beyond ASCII

std::string lowered(std::string_view line);  // ASCII alone

// Why a file counts as one line; empty if it does not.
std::string one_line_fault(const LineArray& lines);

// Whether a line is its writer's own remark: it begins with "=" and is no header.
bool is_remark(std::string_view line);

// Without the blanks and tabs that it begins with; and without those at its end, too.
std::string_view unindented(std::string_view line);
std::string_view stripped(std::string_view line);

// How many blanks and tabs a line begins with.
std::size_t depth(std::string_view line);

// What stands before the first blank, tab, "#" or "&" of a line, its indentation left out.
std::string_view first_word(std::string_view line);

// The name of a section, in quotes: what stands before the "$" of its header, without the "=".
std::string section_name(const Template& file, std::size_t head);

// Whether line `i` can recognise lines of a map: it is no title, header, remark or empty line.
bool recognises(const OldTemplate& old, std::size_t i);

// A template for `near_line`, which finds the last recognition line that `line` begins with,
// whatever the case of letters, the tabs and the blanks; 0 when there is none, or it has another
// first word.
OldTemplate loose_template(const OldTemplate& old);
std::size_t near_line(const OldTemplate& loose, std::string_view line);

// In what `line` differs from a recognition line found for it, as " has other tabs or blanks".
std::string difference(std::string_view line, std::string_view recognition);

// The numbers of lines that follow each other.
using LineRange = std::ranges::iota_view<std::size_t, std::size_t>;

// The lines behind the header of section `s`, up to the next header or the file's end, and those of
// them that its count makes its output; none if there is no such section.
LineRange body_of(const NewTemplate& current, std::size_t s);
LineRange output_of(const NewTemplate& current, std::size_t s);
