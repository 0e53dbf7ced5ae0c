// Converts between the program's UTF-8 and what Windows takes: wide characters, or the code page of
// the functions whose names end in A.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

// Invalid input becomes U+FFFD.
std::wstring widen(std::string_view text);
std::string narrow(std::wstring_view text);

bool is_utf8(std::string_view text);

// Text in the code page as UTF-8.
std::string from_code_page(std::string_view text);

// UTF-8 text in the code page; nullopt if the code page lacks one of its characters.
std::optional<std::string> to_code_page(std::string_view text);

// A file's path in the code page. If the code page lacks one of its characters, the path with short
// (8.3) names; nullopt if it has none.
std::optional<std::string> code_page_path(const std::string& path);

// The Win32 two-call idiom: calls `ask` for the size, then to fill a buffer of that size. Empty if
// the call fails.
using AskText = std::function<unsigned long(wchar_t* text, unsigned long size)>;
std::wstring system_text(const AskText& ask);
