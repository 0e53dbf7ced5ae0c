// What the rules ask about the lines of templates.
#include "check/sections.h"

#include "check/finding.h"
#include "platform/path_rules.h"

#include <algorithm>

namespace {

std::string name_in(std::string_view header) {
  const auto name = header.substr(0, header.find('$'));
  return quoted(stripped(name.substr(is_remark(name) ? 1 : 0)));
}

// Without indentation, and with every run of blanks and tabs as one blank.
std::string loosened(std::string_view line) {
  std::string text;
  for (const char c : unindented(line))
    if (!is_blank(c) || !text.ends_with(' '))
      text += is_blank(c) ? ' ' : c;
  return text;
}

}  // namespace

bool is_blank(char c) { return c == ' ' || c == '\t'; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_letter(char c) {
  const char lower = ascii_lower(c);
  return !is_ascii(c) || (lower >= 'a' && lower <= 'z');
}

bool is_one_line(std::string_view text) {
  return !text.empty() && text.find(LineArray::line_end) == text.npos;
}

bool is_readable(const Pair& pair) {
  return !pair.old.failure && !pair.current.failure && !is_one_line(pair.old.lines.text()) &&
         !is_one_line(pair.current.lines.text());
}

bool is_remark(std::string_view line) { return line.starts_with('='); }

std::string_view unindented(std::string_view line) {
  return line.substr(std::min(line.find_first_not_of(" \t"), line.size()));
}

std::string_view stripped(std::string_view line) {
  return unindented(line.substr(0, line.find_last_not_of(" \t") + 1));
}

std::string section_name(const OldTemplate& old, std::size_t s) {
  return name_in(old.lines[old.oldheads[s]]);
}

std::string section_name(const NewTemplate& current, std::size_t s) {
  return name_in(current.lines[current.newheads[s]]);
}

bool recognises(const OldTemplate& old, std::size_t i) {
  const auto line = old.lines[i];
  return i > 0 && !line.empty() && !is_header(line) && !is_remark(line);
}

LooseIndex::LooseIndex(const OldTemplate& old) {
  for (std::size_t i = 0; i < old.lines.size(); ++i)
    if (recognises(old, i) && !unindented(old.lines[i]).empty()) {
      texts.push_back(loosened(old.lines[i]));
      lines.push_back(i);
    }
  index = PrefixIndex({texts.begin(), texts.end()});
}

std::size_t LooseIndex::find(std::string_view line) const {
  return lines[index.find(loosened(line))];
}

Lines body_of(const NewTemplate& current, std::size_t s) {
  if (s >= current.newheads.size())
    return {0, 0};
  const bool last = s + 1 == current.newheads.size();
  const std::size_t end = last ? current.lines.size() : current.newheads[s + 1];
  return {std::min(current.newheads[s] + 1, end), end};
}

Lines output_of(const NewTemplate& current, std::size_t s) {
  const auto [begin, end] = body_of(current, s);
  if (begin == end)
    return {begin, end};
  const auto count = std::clamp(current.counts[s], 0LL, static_cast<long long>(end - begin));
  return {begin, begin + static_cast<std::size_t>(count)};
}
