// Small operations on texts that the whole program shares.
#pragma once

#include <string>
#include <string_view>

// The number at the text's start: an optional sign, digits and at most one decimal point, up to the
// first character that cannot continue it; 0 when the text does not begin with a number. Blanks
// (spaces and tabs) are skipped wherever they stand. There is no exponent and no other base.
double numeric_value(std::string_view text);

// The whole part of a numeric value, held at the type's limit when it is too large for it.
long long whole_part(double value);

// The shortest decimal form: 4 for 4, 0.5 for one half.
std::string number_text(double value);

// `text` with each control character written as "\x" and two hexadecimal digits, so that what a
// stranger wrote can be shown.
std::string printable(std::string_view text);

// The position, counted from 1, just after the last `separator`; 1 when there is none.
std::size_t afterlast(std::string_view text, char separator);

// The part of a path after its last "\".
std::string_view filename(std::string_view path);
