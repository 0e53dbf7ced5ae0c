// The characters of UTF-8 text, one at a time.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Reads the character at the start of `text`, which must not be empty. Gives its length in bytes; 0
// when the bytes there are no character.
std::size_t decode_utf8(std::string_view text, char32_t& character);

// Adds a character to the end of `text`.
void append_utf8(std::string& text, char32_t character);
