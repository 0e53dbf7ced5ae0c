// Runs templates and a map through both passes, and the checker over them. The input is an old
// template, a new template and a map, separated by NUL bytes, with lines that end in CR LF.
#include "check/checker.h"
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

// As the templates of the expansion, for both passes and for the map's version. The new one is what
// the baseline shows, too.
void check(const std::string& old, const std::string& current, const std::string& text) {
  const Map map{"a.galaxy", LineArray::split(text)};
  const std::string version(version_of(map.lines[1]));
  Checker checker(find_editions("", {{"tnewstruct0.txt", "Map\r\nversion 99\r\n" + current},
                                     {"toldstruct" + version + ".txt", old},
                                     {"tnewstruct" + version + ".txt", current},
                                     {"toldstructfix99.txt", old},
                                     {"tnewstructfix99.txt", current}}));
  const auto run = checker.add(map);
  if (run && (trace(*run).empty() || (run->result && unified_diff(*run) == "-")))
    std::abort();
  if (checker.report(true).empty())
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view rest(reinterpret_cast<const char*>(data), size);
  const std::string old_text(cut(rest)), new_text(cut(rest));
  const auto old = index_old("old.txt", old_text);
  const auto current = index_new("new.txt", new_text);
  const auto galaxylines = LineArray::split(std::string(rest));
  const auto first = first_pass(old, current, galaxylines);
  const auto fixed = fix_pass(old, current, galaxylines);
  for (const auto& result : {first, fixed})
    if (result && !result->empty() && !result->ends_with("\r\n"))
      std::abort();
  check(old_text, new_text, std::string(rest));
  return 0;
}
