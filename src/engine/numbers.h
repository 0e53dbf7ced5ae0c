// Numbers in texts: versions, section counts and the counters that labels show.
#pragma once

#include <string>
#include <string_view>

// The number at the text's start: an optional sign, digits and at most one decimal point, up to the
// first character that cannot continue it; 0 when the text does not begin with a number. Blanks
// (spaces and tabs) are skipped wherever they stand. There is no exponent and no other base.
double numeric_value(std::string_view text);

// Whether there is a number at the text's start.
bool has_number(std::string_view text);

// The whole part of a value, clamped to the limits of the type.
long long whole_part(double value);

// The shortest decimal form, without an exponent: 4 for 4, 0.5 for one half.
std::string number_text(double value);
