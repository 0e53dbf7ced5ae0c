// Structure templates: what the program knows about how a map of an older format version differs
// from the current one.
#include "convert/templates.h"

#include "convert/linereader.h"
#include "form/text.h"

namespace {

constexpr std::size_t missing_template_lines = 11;

// A header's "$" stands after at least one character.
bool is_header(std::string_view line) {
  const auto dollar = line.find('$');
  return dollar != std::string_view::npos && dollar > 0;
}

// The number after the first "$"; the number at the line's start when there is none.
long long count(std::string_view header) {
  const auto dollar = header.find('$');
  return whole_part(
      numeric_value(dollar == std::string_view::npos ? header : header.substr(dollar + 1)));
}

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

void index_headers(Template& file) {
  std::vector<std::size_t> heads;
  for (std::size_t i = 0; i < file.lines.size(); ++i)
    if (is_header(file.lines[i]))
      heads.push_back(i);
  if (!heads.empty())
    file.heads = std::move(heads);
  for (const std::size_t head : file.heads)
    file.counts.push_back(count(file.lines[head]));
}

void fill(Template& file, std::string filename, Result<std::string> text) {
  file.filename = std::move(filename);
  if (!text)
    file.failure = text.failure();
  file.lines = text ? LineArray::split(std::move(*text)) : LineArray::empty(missing_template_lines);
  index_headers(file);
}

// The template of that file in `loaded`, made by `index` where the file has not been read before or
// does not read as it did then.
template <class Kind, class Index>
const Kind* load(Files& files, std::map<std::string, Kind>& loaded, std::string filename,
                 Index index) {
  auto text = files.read(filename);
  const auto before = loaded.find(filename);
  const bool same = before != loaded.end() && bool(text) == !before->second.failure &&
                    (!text || *text == before->second.lines.text());
  if (same)
    return &before->second;
  Kind made = index(filename, std::move(text));
  return &(loaded[std::move(filename)] = std::move(made));
}

}  // namespace

OldTemplate index_old(std::string filename, Result<std::string> text) {
  OldTemplate file;
  fill(file, std::move(filename), std::move(text));
  std::vector<std::string_view> texts;
  std::uint32_t section = 0;
  for (std::size_t i = 0; i < file.lines.size(); ++i) {
    texts.push_back(file.lines[i]);
    if (section + 1 < file.heads.size() && file.heads[section + 1] < i)
      ++section;
    file.sections.push_back(section);
  }
  file.index = PrefixIndex(texts);
  return file;
}

NewTemplate index_new(std::string filename, Result<std::string> text) {
  NewTemplate file;
  fill(file, std::move(filename), std::move(text));
  for (std::size_t i = 0; i < file.lines.size(); ++i)
    file.output.push_back(output_line(file.lines[i]));
  return file;
}

void Templates::loadold(std::string_view ver) {
  current_old =
      load(files, loaded_old, edition + "oldstruct" + std::string(ver) + ".txt", index_old);
}

void Templates::loadnew(std::string_view ver) {
  current_new =
      load(files, loaded_new, edition + "newstruct" + std::string(ver) + ".txt", index_new);
}

void Templates::loadoldfix(double ver) {
  current_old =
      load(files, loaded_old, edition + "oldstructfix" + number_text(ver) + ".txt", index_old);
}

void Templates::loadnewfix(double ver) {
  current_new =
      load(files, loaded_new, edition + "newstructfix" + number_text(ver) + ".txt", index_new);
}

Result<double> Templates::initnew() {
  const auto lines = read_text(files, edition + "newstruct0.txt");
  if (!lines)
    return lines.failure();
  return numeric_value(version_of((*lines)[1]));
}

std::string_view version_of(std::string_view second_line) {
  const auto last =
      second_line.substr(second_line.size() - std::min<std::size_t>(2, second_line.size()));
  return last.starts_with(' ') ? last.substr(1) : last;
}
