// Structure templates: what the program knows about how a map of an older format version differs
// from the current one.
#include "convert/templates.h"

#include "convert/linereader.h"
#include "form/text.h"

namespace {

constexpr std::size_t missingtemplatelines = 11;

// A header's "$" stands after at least one character.
bool isheader(std::string_view line) {
  const auto dollar = line.find('$');
  return dollar != std::string_view::npos && dollar > 0;
}

// The number after the first "$"; the number at the line's start when there is none.
long long count(std::string_view header) {
  const auto dollar = header.find('$');
  return wholepart(
      numericvalue(dollar == std::string_view::npos ? header : header.substr(dollar + 1)));
}

OutputLine outputline(std::string_view line) {
  const auto without = [&](std::size_t count) { return line.substr(0, line.size() - count); };
  if (line.ends_with(" #"))
    return {without(1), Marker::lastcharacter};
  if (line.ends_with("##"))
    return {without(2), Marker::lasttwo};
  if (line.ends_with(" &"))
    return {without(1), Marker::rest};
  const bool dropped = line.ends_with('#') || line.ends_with('&');
  return {line, dropped ? Marker::dropped : Marker::none};
}

void indexheads(Template& file) {
  std::vector<std::size_t> heads;
  for (std::size_t i = 0; i < file.lines.size(); ++i)
    if (isheader(file.lines[i]))
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
  file.lines = text ? LineArray::split(std::move(*text)) : LineArray::empty(missingtemplatelines);
  indexheads(file);
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

OldTemplate indexold(std::string filename, Result<std::string> text) {
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

NewTemplate indexnew(std::string filename, Result<std::string> text) {
  NewTemplate file;
  fill(file, std::move(filename), std::move(text));
  for (std::size_t i = 0; i < file.lines.size(); ++i)
    file.output.push_back(outputline(file.lines[i]));
  return file;
}

void Templates::loadold(std::string_view ver) {
  currentold = load(files, loadedold, edition + "oldstruct" + std::string(ver) + ".txt", indexold);
}

void Templates::loadnew(std::string_view ver) {
  currentnew = load(files, loadednew, edition + "newstruct" + std::string(ver) + ".txt", indexnew);
}

void Templates::loadoldfix(double ver) {
  currentold =
      load(files, loadedold, edition + "oldstructfix" + numbertext(ver) + ".txt", indexold);
}

void Templates::loadnewfix(double ver) {
  currentnew =
      load(files, loadednew, edition + "newstructfix" + numbertext(ver) + ".txt", indexnew);
}

Result<double> Templates::initnew() {
  const auto lines = readtext(files, edition + "newstruct0.txt");
  if (!lines)
    return lines.failure();
  return numericvalue(versionof((*lines)[1]));
}

std::string_view versionof(std::string_view secondline) {
  const auto last =
      secondline.substr(secondline.size() - std::min<std::size_t>(2, secondline.size()));
  return last.starts_with(' ') ? last.substr(1) : last;
}
