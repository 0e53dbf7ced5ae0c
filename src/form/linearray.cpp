// The lines of a text file.
#include "form/linearray.h"

namespace {

constexpr std::string_view lineend = "\r\n";

// Few texts have shorter lines on average, so that the array rarely has to grow. Room that is not
// used is never touched, and costs nothing.
constexpr std::size_t usuallength = 16;

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
  array.lines.reserve(1 + rest.size() / usuallength);
  std::size_t begin = 0;
  for (auto at = rest.find('\n'); at != std::string_view::npos; at = rest.find('\n', at + 1)) {
    if (at == begin || rest[at - 1] != '\r')
      continue;
    array.lines.push_back(rest.substr(begin, at - 1 - begin));
    begin = at + 1;
  }
  array.lines.push_back(rest.substr(begin));
  return array;
}

std::string_view LineArray::piece(std::size_t from, std::size_t to) const {
  const char* const begin = lines[from].data();
  const char* const end = lines[to - 1].data() + lines[to - 1].size();
  return {begin, static_cast<std::size_t>(end - begin)};
}

LineArray LineArray::empty(std::size_t count) {
  LineArray array;
  array.lines.resize(count);
  return array;
}
