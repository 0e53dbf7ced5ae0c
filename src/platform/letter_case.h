// Case-insensitive comparison folds both texts in the way of the machine that keeps the maps.
#pragma once

#include <string>
#include <string_view>

// UTF-8 `text` in lower case, letter by letter: on Windows by the rules of the invariant locale, on
// Linux as Unicode maps them; there invalid bytes are kept as they are, and without the system's
// C.UTF-8 locale only ASCII letters are lowered.
std::string lowercase(std::string_view text);
