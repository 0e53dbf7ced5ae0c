// What the checker has found: errors and warnings with their places.
#include "check/finding.h"

#include "platform/printable.h"

#include <algorithm>
#include <tuple>

namespace {

constexpr std::size_t longest_quote = 60;  // bytes

std::string coloured(const std::string& text, const char* colour, bool colours) {
  return colours ? "\033[" + std::string(colour) + "m" + text + "\033[0m" : text;
}

std::string line_of(const Finding& finding, bool colours) {
  const std::string kind =
      finding.error ? coloured("error:", "1;31", colours) : coloured("warning:", "1;35", colours);
  return coloured(printable(finding.file) + ":" + std::to_string(finding.line) + ":", "1",
                  colours) +
         " " + kind + " " + printable(finding.text) + " [" + finding.rule + "]\n";
}

}  // namespace

void Findings::add(Finding finding) {
  ++total;
  error_count += finding.error ? 1 : 0;
  if (kept.size() < most)
    kept.push_back(std::move(finding));
}

std::string Findings::report(bool colours) {
  const auto place = [](const Finding& f) { return std::tie(f.file, f.line); };
  std::stable_sort(kept.begin(), kept.end(),
                   [&](const Finding& a, const Finding& b) { return place(a) < place(b); });
  std::string text;
  for (const Finding& finding : kept)
    text += line_of(finding, colours);
  if (total == 0)
    return "no findings\n";
  return text + counted(error_count, "error") + ", " + counted(total - error_count, "warning") +
         (total > kept.size() ? ", of which " + std::to_string(kept.size()) + " are shown\n"
                              : "\n");
}

std::string counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string line_number(std::size_t index) { return "line " + std::to_string(index + 1); }

std::string quoted(std::string_view line) {
  std::string text;
  for (const char c : line.substr(0, longest_quote))
    text += c == '\t' ? "\\t" : std::string(1, c);
  return '"' + text + (line.size() > longest_quote ? "...\"" : "\"");
}

std::string name_of(const std::string& path) { return path.substr(path.find_last_of("/\\") + 1); }
