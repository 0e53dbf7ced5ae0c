// Rules for names that every machine shares.
#include "platform/names.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace {

// Patterns end in ASCII letters only, so that lowering these is enough.
char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool isletter(char c) { return lower(c) >= 'a' && lower(c) <= 'z'; }

}  // namespace

bool matchespattern(std::string_view name, std::string_view pattern) {
  const std::string_view end = pattern.substr(1);
  return name.size() >= end.size() &&
         std::equal(end.rbegin(), end.rend(), name.rbegin(),
                    [](char a, char b) { return lower(a) == lower(b); });
}

bool allowedname(std::string_view name) {
  return std::none_of(name.begin(), name.end(), [](char c) {
    return static_cast<unsigned char>(c) < 32 ||
           std::string_view(R"(<>:"/\|?*)").find(c) != std::string_view::npos;
  });
}

std::vector<std::string> splitpath(std::string_view path, const char* separators) {
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
  for (std::string& name : splitpath(rest)) {
    if (!allowedname(name))
      return Failure{path, "find it", "Windows does not allow such a name"};
    if (name != "..")
      from.push_back(std::move(name));
    else if (!from.empty())
      from.pop_back();
  }
  return from;
}

bool hasdrive(std::string_view path) {
  return path.size() >= 2 && isletter(path[0]) && path[1] == ':';
}

void sortentries(std::vector<Entry>& entries, std::string (*lowercase)(std::string_view)) {
  std::vector<std::pair<std::string, Entry>> keyed;
  keyed.reserve(entries.size());
  for (Entry& entry : entries)
    keyed.emplace_back(lowercase(entry.name), std::move(entry));
  std::sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) {
    return std::tie(a.first, a.second.name) < std::tie(b.first, b.second.name);
  });
  std::transform(keyed.begin(), keyed.end(), entries.begin(),
                 [](auto& pair) { return std::move(pair.second); });
}
