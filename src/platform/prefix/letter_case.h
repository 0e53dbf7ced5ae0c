// Letter case on Linux: names in a Wine prefix are case-insensitive, as on Windows.
#pragma once

#include <string>
#include <string_view>

// UTF-8 `text` in lower case, letter by letter as Unicode maps them; invalid bytes are kept as they
// are. Without the system's C.UTF-8 locale only ASCII letters are lowered.
std::string lowercase(std::string_view text);
