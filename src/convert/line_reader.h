// Reads text files into line arrays.
#pragma once

#include "form/form1.h"

#include <string>
#include <string_view>

// The lines of a file of exactly this name; fails when it is missing or cannot be read.
Result<LineArray> read_text(Files& files, const std::string& path);

// The same, but never fails: a missing file gives 11 empty lines (a folder and a hidden file count
// as missing), a file that cannot be read gives one empty line.
LineArray readlines(Files& files, const std::string& path);

// The same, and a file that is there but cannot be read, or whose lines end in LF, is reported.
LineArray readlines_or_report(Form1& form, const std::string& path);

// Whether a text has lines that end in LF, and none that ends in CR LF: it is read as one line.
bool ends_lines_in_lf(std::string_view text);

// What a user is told about such a file.
inline constexpr char needs_cr_lf[] = "its lines must end in CR LF";
