// Letter case as Windows defines it.
#pragma once

#include <string>
#include <string_view>

// UTF-8 `text` in lower case, by the rules of the invariant locale.
std::string lowercase(std::string_view text);
