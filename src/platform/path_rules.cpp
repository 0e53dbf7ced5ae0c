// The rules of Windows paths and names that all machines share.
#include "platform/path_rules.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace {

bool equal_folded(char a, char b) { return ascii_lower(a) == ascii_lower(b); }

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
  std::vector<std::pair<std::string, Entry>> keyed;
  keyed.reserve(entries.size());
  for (Entry& entry : entries)
    keyed.emplace_back(lowercase(entry.name), std::move(entry));
  std::ranges::sort(keyed, {},
                    [](const auto& pair) { return std::tie(pair.first, pair.second.name); });
  std::ranges::transform(keyed, entries.begin(), [](auto& pair) { return std::move(pair.second); });
}

std::size_t afterlast(std::string_view text, char separator) {
  const auto last = text.rfind(separator);
  return last == std::string_view::npos ? 1 : last + 2;
}

std::string_view filename(std::string_view path) { return path.substr(afterlast(path, '\\') - 1); }
