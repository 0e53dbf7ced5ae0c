// Rules for names that every machine shares.
#include "platform/names.h"

#include <algorithm>

namespace {

// Patterns end in ASCII letters only, so that lowering these is enough.
char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

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
