// Text from outside, made fit for a terminal.
#pragma once

#include <string>
#include <string_view>

// Escapes what could disturb a terminal or disguise a name: control characters and the characters
// that change the direction of writing, byte by byte as "\x" and two hexadecimal digits, but a tab
// as "\t".
std::string printable(std::string_view text);

// The same for a text whose tabs and line ends, LF or CR LF, stay.
std::string printable_lines(std::string_view text);
