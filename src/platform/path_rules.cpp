// The rules of Windows paths and names that all machines share.
#include "platform/path_rules.h"

#include <algorithm>
#include <compare>
#include <utility>

namespace {

bool equal_folded(char a, char b) { return ascii_lower(a) == ascii_lower(b); }

// Whether `at` is inside a UTF-8 character, not at its first byte.
bool is_continuation(std::string_view text, std::size_t at) {
  return at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80;
}

// The first UTF-8 character of a text.
std::string_view first_character(std::string_view text) {
  std::size_t end = 1;
  while (is_continuation(text, end))
    ++end;
  return text.substr(0, end);
}

// Case-insensitive, with the same result as comparing all of both in lower case. Folds the first
// differing character, and the rest only if that is equal; calls `lowercase` only for non-ASCII.
std::strong_ordering compare(std::string_view a, std::string_view b,
                             std::string (*lowercase)(std::string_view)) {
  const auto ends = std::mismatch(a.begin(), a.end(), b.begin(), b.end(), equal_folded);
  auto common = static_cast<std::size_t>(ends.first - a.begin());
  while (common > 0 && (is_continuation(a, common) || is_continuation(b, common)))
    --common;
  a.remove_prefix(common);
  b.remove_prefix(common);
  if (a.empty() || b.empty())
    return a.size() <=> b.size();
  if (is_ascii(a[0]) && is_ascii(b[0]) && !equal_folded(a[0], b[0]))
    return ascii_lower(a[0]) <=> ascii_lower(b[0]);
  const std::string first = lowercase(first_character(a)), other = lowercase(first_character(b));
  const auto both = std::min(first.size(), other.size());
  if (const int order = first.compare(0, both, other, 0, both); order != 0)
    return order <=> 0;
  return lowercase(a) <=> lowercase(b);
}

}  // namespace

bool matches_pattern(std::string_view name, std::string_view pattern) {
  const std::string_view end = pattern.substr(1);
  return name.size() >= end.size() &&
         std::equal(end.rbegin(), end.rend(), name.rbegin(), equal_folded);
}

bool is_allowed_name(std::string_view name) {
  return std::none_of(name.begin(), name.end(), [](char c) {
    return static_cast<unsigned char>(c) < 32 ||
           std::string_view(R"(<>:"/\|?*)").find(c) != std::string_view::npos;
  });
}

std::vector<std::string> split_names(std::string_view path, const char* separators) {
  std::vector<std::string> names;
  while (!path.empty()) {
    const auto length = std::min(path.find_first_of(separators), path.size());
    const std::string_view name = path.substr(0, length);
    if (!name.empty() && name != ".")
      names.emplace_back(name);
    path.remove_prefix(std::min(length + 1, path.size()));
  }
  return names;
}

Result<std::vector<std::string>> resolve(std::vector<std::string> from, std::string_view rest,
                                         const std::string& path) {
  for (std::string& name : split_names(rest)) {
    if (!is_allowed_name(name))
      return Failure{path, "find it", "Windows does not allow such a name"};
    if (name != "..")
      from.push_back(std::move(name));
    else if (!from.empty())
      from.pop_back();
  }
  return from;
}

std::size_t length_in_characters(std::string_view text) {
  const auto begins_character = [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  };
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), begins_character));
}

bool has_drive(std::string_view path) {
  return path.size() >= 2 && ascii_lower(path[0]) >= 'a' && ascii_lower(path[0]) <= 'z' &&
         path[1] == ':';
}

void sort_entries(std::vector<Entry>& entries, std::string (*lowercase)(std::string_view)) {
  std::sort(entries.begin(), entries.end(), [&](const Entry& a, const Entry& b) {
    const auto order = compare(a.name, b.name, lowercase);
    return order < 0 || (order == 0 && a.name < b.name);
  });
}

std::size_t afterlast(std::string_view text, char separator) {
  const auto last = text.rfind(separator);
  return last == std::string_view::npos ? 1 : last + 2;
}

std::string_view filename(std::string_view path) { return path.substr(afterlast(path, '\\') - 1); }
