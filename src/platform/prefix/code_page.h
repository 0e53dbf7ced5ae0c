// Text in a code page of Windows.
#pragma once

#include <string>
#include <string_view>

// `text` in the code page of that number, such as "1252", as UTF-8; what is no character there
// becomes U+FFFD. A number that the C library does not know counts as 1252.
std::string from_code_page(const std::string& page, std::string_view text);
