// Texts at the edge to Windows: the program's are UTF-8, those of the system wide characters or in
// the code page of the facilities named with an A. They change here alone.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

// What is no text in the one form becomes U+FFFD in the other.
std::wstring widen(std::string_view text);
std::string narrow(std::wstring_view text);

// The code page's text in UTF-8.
std::string from_code_page(std::string_view text);

// A text in the code page; nothing when that lacks one of its characters.
std::optional<std::string> to_code_page(std::string_view text);

// A file's path in the code page, by the short names of its folders where that lacks one of their
// characters; nothing when they have none.
std::optional<std::string> code_page_path(const std::string& path);

// What a call of the system gives that answers the length of a text, or else the size that it
// needs; empty when it fails.
using AskText = std::function<unsigned long(wchar_t* text, unsigned long size)>;
std::wstring system_text(const AskText& ask);
