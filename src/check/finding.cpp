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
  const bool here = finding.seen.file == finding.place.file;
  if (finding.maps == 0 || (here && finding.maps == 1))
    return "";
  const std::string first =
      here ? "here" : finding.seen.file + ":" + std::to_string(finding.seen.line + 1);
  const std::string maps = "in " + std::to_string(finding.maps) + " maps, first ";
  return " (" + (finding.maps > 1 ? maps : "") + first + ")";
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

// A remark is above what it silences, with nothing but other remarks between.
bool Findings::Remark::is_for(std::size_t i) const {
  std::size_t below = line + 1, header = std::min(i, lines->size());
  while (is_remark((*lines)[below]))
    ++below;
  while (header > 0 && !is_header((*lines)[header]))
    --header;
  while (header < lines->size() && !is_header((*lines)[header]))
    ++header;
  return below == i || below == header || header == lines->size();
}

void Findings::read_remarks(const std::string& file, const LineArray& lines) {
  for (std::size_t i = 0; i < lines.size(); ++i)
    if (is_remark(lines[i]) && lines[i].starts_with(remark_start))
      remarks.insert(
          {file, {&lines, i, std::string(stripped(lines[i].substr(remark_start.size())))}});
}

bool Findings::silence(const Finding& finding) {
  const auto [begin, end] = remarks.equal_range(finding.place.file);
  for (auto at = begin; at != end; ++at)
    if (Remark& remark = at->second;
        remark.rule == finding.rule->name && remark.is_for(finding.place.line))
      return remark.used = true;
  return false;
}

void Findings::add(Finding finding, const std::string& key) {
  const auto at = known.find(key);
  if (key.empty() || at == known.end()) {
    finding.silenced = silence(finding);
    finding.maps = finding.seen.file.empty() ? 0 : 1;
    finding.last_map = finding.seen.file;
    ++(finding.silenced ? silenced : counts[finding.rule->severity == Severity::error ? 0 : 1]);
    if (!key.empty())
      known[key] = kept.size();
    kept.push_back(std::move(finding));
  } else if (Finding& first = kept[at->second]; first.last_map != finding.seen.file) {
    first.last_map = finding.seen.file;
    ++first.maps;
  }
}

void Findings::check_remarks(const std::function<bool(const std::string&)>& checked) {
  const Report report(*this, "needless-remark");
  for (const auto& [file, remark] : remarks) {
    const Rule* rule = find_rule(remark.rule);
    if (!rule)
      report({file, remark.line}, "there is no rule " + quoted(remark.rule));
    else if (!remark.used && (!rule->needs_maps() || checked(file)))
      report({file, remark.line}, "it silences nothing");
  }
}

std::string Findings::report(bool colours) {
  std::ranges::sort(kept, {}, [](const Finding& f) {
    return std::tie(f.place.file, f.place.line, f.rule, f.place.column, f.text);
  });
  std::string text;
  for (const Finding& finding : kept)
    text += finding.silenced ? "" : line_of(finding, colours);
  return text;
}

std::string Findings::summary() const {
  return counted(counts[0], "error") + ", " + counted(counts[1], "warning") +
         (silenced > 0 ? ", " + std::to_string(silenced) + " silenced" : "");
}

void Report::operator()(const Place& place, std::string text, const Place& seen,
                        const std::string& key) const {
  const std::string at = key.empty() ? place.file + "\n" + std::to_string(place.line) : key;
  findings.add({rule, place, std::move(text), seen, 0, {}},
               seen.file.empty() ? "" : rule->name + ("\n" + at));
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
