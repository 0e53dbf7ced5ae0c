// The lines of a text file.
#include "engine/line_array.h"

namespace {

// Shorter than the average line of nearly every text, so the array rarely has to grow. Reserved
// memory that stays unused is never touched and costs nothing.
constexpr std::size_t usual_length = 16;

}  // namespace

LineArray LineArray::split(std::string text) {
  LineArray array;
  array.content = std::make_unique<std::string>(std::move(text));
  std::string_view rest = *array.content;
  while (rest.ends_with(line_end))
    rest.remove_suffix(line_end.size());
  if (rest.empty())
    return array;
  array.begins.reserve(2 + rest.size() / usual_length);
  array.begins.push_back(0);
  for (auto at = rest.find('\n', 1); at != rest.npos; at = rest.find('\n', at + 1))
    if (rest[at - 1] == '\r')
      array.add_line_ending_at(at - 1);
  array.add_line_ending_at(rest.size());
  return array;
}

LineArray LineArray::empty(std::size_t count) {
  LineArray array;
  array.begins.resize(count + 1);
  return array;
}
