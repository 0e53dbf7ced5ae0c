// Text from outside, made fit for a terminal.
#pragma once

#include <string>
#include <string_view>

// Escapes what could disturb a terminal or disguise a name: control characters and the characters
// that change the direction of writing, byte by byte as "\x" and two hexadecimal digits.
std::string printable(std::string_view text);
