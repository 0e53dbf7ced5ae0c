// Structure templates: what the program knows about how a map of an older format version differs
// from the current one.
#include "engine/templates.h"

#include "engine/numbers.h"

#include <algorithm>

namespace {

constexpr std::size_t missing_template_lines = 11;

OutputLine output_line(std::string_view line) {
  const auto without = [&](std::size_t count) { return line.substr(0, line.size() - count); };
  if (line.ends_with(" #"))
    return {without(1), Marker::last_character};
  if (line.ends_with("##"))
    return {without(2), Marker::last_two};
  if (line.ends_with(" &"))
    return {without(1), Marker::rest};
  const bool dropped = line.ends_with('#') || line.ends_with('&');
  return {line, dropped ? Marker::dropped : Marker::none};
}

void fill(Template& file, std::string filename, Result<std::string> text) {
  file.filename = std::move(filename);
  if (!text)
    file.failure = text.failure();
  file.lines = text ? LineArray::split(std::move(*text)) : LineArray::empty(missing_template_lines);
}

// The lines of the section headers, whose counts go to the template.
std::vector<std::size_t> index_headers(Template& file) {
  std::vector<std::size_t> heads;
  for (std::size_t i = 0; i < file.lines.size(); ++i)
    if (is_header(file.lines[i]))
      heads.push_back(i);
  if (heads.empty())
    heads.push_back(0);
  for (const std::size_t head : heads)
    file.counts.push_back(whole_part(numeric_value(count_text(file.lines[head]))));
  return heads;
}

}  // namespace

// A header's "$" stands after at least one character.
bool is_header(std::string_view line) {
  const auto dollar = line.find('$');
  return dollar != std::string_view::npos && dollar > 0;
}

// What follows the first "$"; the whole line when there is none.
std::string_view count_text(std::string_view header) {
  const auto dollar = header.find('$');
  return dollar == std::string_view::npos ? header : header.substr(dollar + 1);
}

OldTemplate index_old(std::string filename, Result<std::string> text) {
  OldTemplate file;
  fill(file, std::move(filename), std::move(text));
  file.oldheads = index_headers(file);
  std::vector<std::string_view> texts;
  std::uint32_t section = 0;
  for (std::size_t i = 0; i < file.lines.size(); ++i) {
    texts.push_back(file.lines[i]);
    if (section + 1 < file.oldheads.size() && file.oldheads[section + 1] < i)
      ++section;
    file.sections.push_back(section);
  }
  file.index = RadixTree(texts);
  return file;
}

NewTemplate index_new(std::string filename, Result<std::string> text) {
  NewTemplate file;
  fill(file, std::move(filename), std::move(text));
  file.newheads = index_headers(file);
  for (std::size_t i = 0; i < file.lines.size(); ++i)
    file.output.push_back(output_line(file.lines[i]));
  return file;
}

std::size_t matchline(const OldTemplate& oldtemplate, std::string_view line) {
  return oldtemplate.index.find(line);
}

std::size_t sectionof(const OldTemplate& oldtemplate, std::size_t t) {
  return oldtemplate.sections[t];
}

std::string_view version_of(std::string_view second_line) {
  const auto last =
      second_line.substr(second_line.size() - std::min<std::size_t>(2, second_line.size()));
  return last.starts_with(' ') ? last.substr(1) : last;
}
