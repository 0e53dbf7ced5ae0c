// The lines of a text file.
#include "form/linearray.h"

#include <algorithm>

namespace {

constexpr std::string_view lineend = "\r\n";

std::string_view withoutlineends(std::string_view text) {
  while (text.ends_with(lineend))
    text.remove_suffix(lineend.size());
  return text;
}

}  // namespace

LineArray LineArray::split(std::string text) {
  LineArray array;
  array.content = std::make_unique<const std::string>(std::move(text));
  std::string_view rest = withoutlineends(*array.content);
  if (rest.empty())
    return array;
  array.lines.reserve(1 + static_cast<std::size_t>(std::count(rest.begin(), rest.end(), '\n')));
  for (auto end = rest.find(lineend); end != std::string_view::npos; end = rest.find(lineend)) {
    array.lines.push_back(rest.substr(0, end));
    rest.remove_prefix(end + lineend.size());
  }
  array.lines.push_back(rest);
  return array;
}

LineArray LineArray::empty(std::size_t count) {
  LineArray array;
  array.lines.resize(count);
  return array;
}
