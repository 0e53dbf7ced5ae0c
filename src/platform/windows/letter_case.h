// Letter case as Windows maps it.
#pragma once

#include <string>
#include <string_view>

// `text` with its letters lowered, in no particular language.
std::string lowercase(std::string_view text);
