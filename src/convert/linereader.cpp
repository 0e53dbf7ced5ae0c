// Reads text files into line arrays.
#include "convert/linereader.h"

namespace {

constexpr std::size_t missingfilelines = 11;
constexpr std::size_t unreadablefilelines = 1;

}  // namespace

Result<LineArray> readtext(Files& files, const std::string& path) {
  const auto name = files.lookup(path, Match::files);
  if (!name)
    return name.failure();
  if (name->empty())
    return Failure{path, "read it", "the file is missing", true};
  auto text = files.read(path);
  if (!text)
    return text.failure();
  return LineArray::split(std::move(*text));
}

LineArray readlines(Files& files, const std::string& path) {
  auto lines = readtext(files, path);
  if (lines)
    return std::move(*lines);
  return LineArray::empty(lines.failure().missing ? missingfilelines : unreadablefilelines);
}
