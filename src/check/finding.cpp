// What the checker has found, with its places.
#include "check/finding.h"

#include "check/sections.h"
#include "platform/printable.h"

#include <algorithm>
#include <tuple>

namespace {

constexpr std::size_t longest_quote = 60;  // bytes
constexpr std::string_view remark_start = "= check:";

std::string coloured(const std::string& text, const char* colour, bool colours) {
  return colours ? "\033[" + std::string(colour) + "m" + text + "\033[0m" : text;
}

// In which maps a finding shows.
std::string shown_in(const Finding& finding) {
  const auto& [file, line, column] = finding.seen;
  const std::size_t maps = finding.maps.size();
  const bool here = file == finding.place.file;
  if (maps == 0 || (here && maps == 1))
    return "";
  return (maps > 1 ? " (in " + std::to_string(maps) + " maps, first " : " (") +
         (here ? "here" : file + ":" + std::to_string(line + 1)) + ")";
}

std::string line_of(const Finding& finding, bool colours) {
  const auto& [file, line, column] = finding.place;
  const std::string place = printable(file) + ":" + std::to_string(line + 1) + ":" +
                            (column > 0 ? std::to_string(column) + ":" : "");
  const bool error = finding.rule->severity == Severity::error;
  return coloured(place, "1", colours) + " " +
         coloured(error ? "error:" : "warning:", error ? "1;31" : "1;35", colours) + " " +
         printable(finding.text + shown_in(finding)) + " [" + finding.rule->name + "]\n";
}

}  // namespace

// A remark is above what it silences, with nothing but other remarks between. The first section
// begins with the file.
void Findings::read_remarks(const std::string& file, const LineArray& lines) {
  const auto next_header = [&](std::size_t i) {
    while (i < lines.size() && !is_header(lines[i]))
      ++i;
    return i;
  };
  const std::size_t first = next_header(0);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (!is_remark(lines[i]) || !lines[i].starts_with(remark_start))
      continue;
    std::size_t below = i + 1;
    while (is_remark(lines[below]))
      ++below;
    std::size_t begin = below, end = below + 1;
    if (first == lines.size())
      std::tie(begin, end) = std::pair(0, lines.size());
    else if (is_header(lines[below]))
      std::tie(begin, end) = std::pair(below == first ? 0 : below, next_header(below + 1));
    const Place place{file, i};
    const std::string rule(stripped(lines[i].substr(remark_start.size())));
    remarks.push_back({place, rule, begin, end});
  }
}

void Findings::add(const std::string& key, const Finding& finding) {
  const auto at = kept.try_emplace(key, finding).first;
  if (!finding.seen.file.empty())
    at->second.maps.insert(finding.seen.file);
}

void Findings::heed_remarks(const std::function<bool(const std::string&)>& checked) {
  silenced += std::erase_if(kept, [&](const auto& entry) {
    const auto& [rule, place, text, seen, maps] = entry.second;
    for (Remark& remark : remarks)
      if (remark.place.file == place.file && remark.rule == rule->name &&
          remark.begin <= place.line && place.line < remark.end)
        return remark.used = true;
    return false;
  });
  const Report report(*this, "needless-remark");
  for (const Remark& remark : remarks) {
    const Rule* rule = find_rule(remark.rule);
    if (!rule)
      report(remark.place, "there is no rule " + quote(remark.rule));
    else if (!remark.used && (!rule->needs_maps() || checked(remark.place.file)))
      report(remark.place, "it silences nothing");
  }
}

std::size_t Findings::count(Severity severity) const {
  return static_cast<std::size_t>(std::ranges::count_if(
      kept, [&](const auto& entry) { return entry.second.rule->severity == severity; }));
}

std::string Findings::report(bool colours) const {
  std::vector<const Finding*> sorted;
  sorted.reserve(kept.size());
  for (const auto& [key, finding] : kept)
    sorted.push_back(&finding);
  std::ranges::sort(sorted, {}, [](const Finding* f) {
    return std::tie(f->place.file, f->place.line, f->rule, f->place.column, f->text);
  });
  std::string text;
  for (const Finding* finding : sorted)
    text += line_of(*finding, colours);
  return text;
}

std::string Findings::summary() const {
  return counted(count(Severity::error), "error") + ", " +
         counted(count(Severity::warning), "warning") +
         (silenced > 0 ? ", " + std::to_string(silenced) + " silenced" : "");
}

void Report::operator()(const Place& place, const std::string& text, const Place& seen,
                        const std::string& key) const {
  const std::string at = place.file + "\n" + std::to_string(place.line);
  const std::string what = seen.file.empty() ? at + "\n" + text : key.empty() ? at : key;
  findings.add(rule->name + ("\n" + what), {rule, place, text, seen, {}});
}

std::string counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string line_number(std::size_t index) { return "line " + std::to_string(index + 1); }

std::string quote(std::string_view line) {
  return '"' + printable(line.substr(0, longest_quote)) +
         (line.size() > longest_quote ? "...\"" : "\"");
}

std::string name_of(const std::string& path) { return path.substr(path.find_last_of("/\\") + 1); }
