// What the checker has found, with its places.
#include "check/finding.h"

#include "check/sections.h"
#include "platform/printable.h"

#include <algorithm>
#include <ranges>
#include <tuple>

namespace {

constexpr std::size_t longest_quote = 60;  // bytes
constexpr std::string_view remark_start = "= check:";

std::string coloured(const std::string& text, const char* colour, bool colours) {
  return colours ? "\033[" + std::string(colour) + "m" + text + "\033[0m" : text;
}

std::string text_of(const Place& place) {
  return place.file + ":" + std::to_string(place.line + 1);
}

// In which maps a finding shows.
std::string shown_in(const Finding& finding) {
  const std::size_t maps = finding.maps.size();
  const bool here = finding.seen.file == finding.place.file;
  if (maps == 0 || (here && maps == 1))
    return "";
  return (maps > 1 ? " (in " + std::to_string(maps) + " maps, first " : " (") +
         (here ? "here" : text_of(finding.seen)) + ")";
}

std::string line_of(const Finding& finding, bool colours) {
  const auto& [rule, place, text, seen, maps] = finding;
  const std::string column = place.column > 0 ? std::to_string(place.column) + ":" : "";
  const bool error = rule->severity == Severity::error;
  return coloured(printable(text_of(place)) + ":" + column, "1", colours) + " " +
         coloured(error ? "error:" : "warning:", error ? "1;31" : "1;35", colours) + " " +
         printable(text + shown_in(finding)) + " [" + std::string(rule->name) + "]\n";
}

}  // namespace

std::string_view explain(const Rule& rule) {
  const std::string title = "### " + std::string(rule.name) + "\n\n";
  const std::string_view pages = rule_pages;
  const auto page = pages.substr(pages.find(title) + title.size());
  return page.substr(0, page.find("\n```"));
}

// A remark is above what it silences, with nothing but other remarks between. The first section
// begins with the file.
void Findings::read_remarks(const Template& file) {
  const LineArray& lines = file.lines;
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
    const std::string rule(stripped(lines[i].substr(remark_start.size())));
    const bool all = first == lines.size();
    const std::size_t end = all || is_header(lines[below]) ? next_header(below + 1) : below + 1;
    const Place place{file.filename, i};
    remarks.push_back({place, rule, all || below == first ? 0 : below, end});
  }
}

void Findings::add(KnownRule known, const Place& place, const std::string& text, const Place& seen,
                   const std::string& key) {
  const bool in_map = place.file == seen.file;
  const std::string at = in_map ? "" : text_of(place) + " ";
  const std::string what = !key.empty() ? key : at + (in_map || seen.file.empty() ? text : "");
  Finding& finding = kept.try_emplace(std::string(known.rule.name) + "\n" + what,
                                      Finding{&known.rule, place, text, seen, {}})
                         .first->second;
  if (!seen.file.empty())
    finding.maps.insert(seen.file);
}

void Findings::heed_remarks(const std::set<std::string>& checked) {
  silenced += std::erase_if(kept, [&](const auto& entry) {
    const Finding& finding = entry.second;
    const auto& [file, line, column] = finding.place;
    for (Remark& remark : remarks)
      if (remark.place.file == file && remark.rule == finding.rule->name && remark.begin <= line &&
          line < remark.end)
        return remark.used = true;
    return false;
  });
  for (const Remark& remark : remarks) {
    const Rule* rule = find_rule(remark.rule);
    if (!rule)
      add("needless-remark", remark.place, "there is no rule " + quote(remark.rule));
    else if (!remark.used && (!rule->in_maps || checked.contains(remark.place.file)))
      add("needless-remark", remark.place, "it silences nothing");
  }
}

std::size_t Findings::count(Severity severity) const {
  return static_cast<std::size_t>(std::ranges::count(
      kept | std::views::values, severity, [](const Finding& f) { return f.rule->severity; }));
}

std::string Findings::report(bool colours) const {
  const auto found = kept | std::views::values;
  std::vector<Finding> sorted(found.begin(), found.end());
  std::ranges::sort(sorted, {}, [](const Finding& f) {
    return std::tie(f.place.file, f.place.line, f.rule, f.place.column, f.text);
  });
  std::string text;
  for (const Finding& finding : sorted)
    text += line_of(finding, colours);
  return text;
}

std::string Findings::summary() const {
  return counted(count(Severity::error), "error") + ", " +
         counted(count(Severity::warning), "warning") +
         (silenced > 0 ? ", " + std::to_string(silenced) + " silenced" : "");
}

std::string counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string line_number(std::size_t index, const std::string& path) {
  return "line " + std::to_string(index + 1) + (path.empty() ? "" : " of " + name_of(path));
}

std::string quote(std::string_view line) {
  return '"' + printable(line.substr(0, longest_quote)) +
         (line.size() > longest_quote ? "...\"" : "\"");
}

std::string name_of(const std::string& path) { return path.substr(path.find_last_of("/\\") + 1); }
