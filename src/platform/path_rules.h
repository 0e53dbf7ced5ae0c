// The rules of Windows paths and names that all machines share.
#pragma once

#include "platform/files.h"

#include <string>
#include <string_view>
#include <vector>

// ASCII alone: every other byte is left as it is.
constexpr bool is_ascii(char c) { return static_cast<unsigned char>(c) < 0x80; }
constexpr char ascii_lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
constexpr char ascii_upper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// Windows accepts both separators in a path.
constexpr bool is_separator(char c) { return c == '\\' || c == '/'; }

// Whether a file's name matches `pattern`, case-insensitively. A pattern is "*" followed by the end
// of the name ("*.galaxy"); "*" alone matches every name.
bool matches_pattern(std::string_view name, std::string_view pattern);

// Whether Windows would allow `name` as the name of a file or folder.
bool is_allowed_name(std::string_view name);

// Splits a path at any of `separators`. Empty names and "." are left out.
std::vector<std::string> split_names(std::string_view path, const char* separators = "\\/");

// Appends the names in `rest` to `from`, the folder that they start in; ".." removes the name
// before it. Fails, naming `path`, if Windows would not allow one of them.
Result<std::vector<std::string>> resolve(std::vector<std::string> from, std::string_view rest,
                                         const std::string& path);

// The number of characters in a text of UTF-8, by which the length of a path is judged.
std::size_t length_in_characters(std::string_view text);

// Whether a path starts with a drive letter and a colon.
bool has_drive(std::string_view path);

// Sorts in ascending order of the names in lower case, then of their exact bytes.
void sort_entries(std::vector<Entry>& entries, std::string (*lowercase)(std::string_view));

// The position, counted from 1, just after the last `separator`; 1 if there is none.
std::size_t afterlast(std::string_view text, char separator);

// The part of a path after its last "\".
std::string_view filename(std::string_view path);
