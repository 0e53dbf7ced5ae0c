// Texts at the edge to Windows: the program's are UTF-8, those of the system wide characters or in
// the code page of the facilities named with an A. They change here alone.
#pragma once

#include <optional>
#include <string>
#include <string_view>

// What is no text in the one form becomes U+FFFD in the other.
std::wstring widen(std::string_view text);
std::string narrow(std::wstring_view text);

// The code page's text in UTF-8.
std::string fromcodepage(std::string_view text);

// A text in the code page; nothing when that lacks one of its characters.
std::optional<std::string> tocodepage(std::string_view text);
