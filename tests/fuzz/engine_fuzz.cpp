// Runs templates and a map through both passes. The input is an old template, a new template and a
// map, separated by NUL bytes, with lines that end in CR LF.
#include "engine/passes.h"
#include "engine/templates.h"

#include <cstdint>
#include <cstdlib>

namespace {

std::string_view cut(std::string_view& rest) {
  const auto length = std::min(rest.find('\0'), rest.size());
  const auto piece = rest.substr(0, length);
  rest.remove_prefix(std::min(length + 1, rest.size()));
  return piece;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view rest(reinterpret_cast<const char*>(data), size);
  const auto old = index_old("old.txt", std::string(cut(rest)));
  const auto current = index_new("new.txt", std::string(cut(rest)));
  const auto galaxylines = LineArray::split(std::string(rest));
  const auto first = first_pass(old, current, galaxylines);
  const auto fixed = fix_pass(old, current, galaxylines);
  for (const auto& result : {first, fixed})
    if (result && !result->empty() && !result->ends_with("\r\n"))
      std::abort();
  return 0;
}
