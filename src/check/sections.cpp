// What the rules ask about the lines of templates.
#include "check/sections.h"

#include "check/finding.h"
#include "platform/path_rules.h"

#include <algorithm>

namespace {

// A line without indentation, in which every run of tabs and blanks is one blank.
std::string loosened(std::string_view line) {
  std::string text;
  for (const char c : unindented(line))
    if (!is_blank(c) || !text.ends_with(' '))
      text += is_blank(c) ? ' ' : c;
  return text;
}

}  // namespace

std::string lowered(std::string_view line) {
  std::string text(line);
  std::ranges::transform(text, text.begin(), ascii_lower);
  return text;
}

bool is_letter(char c) {
  const char lower = ascii_lower(c);
  return !is_ascii(c) || (lower >= 'a' && lower <= 'z');
}

std::string one_line_fault(const LineArray& lines) {
  const auto text = lines.text();
  if (text.empty() || text.find(LineArray::line_end) != text.npos)
    return "";
  const bool utf16 = text.starts_with("\xFF\xFE") || text.find('\0') != text.npos;
  return utf16 ? "it is UTF-16, but a character has to be one byte: save it as 8-bit text"
               : "it has no CR LF, so the whole file counts as one line";
}

bool is_remark(std::string_view line) { return line.starts_with('=') && !is_header(line); }

std::string_view unindented(std::string_view line) {
  return line.substr(std::min(line.find_first_not_of(" \t"), line.size()));
}

std::string_view stripped(std::string_view line) {
  return unindented(line.substr(0, line.find_last_not_of(" \t") + 1));
}

std::size_t depth(std::string_view line) { return line.size() - unindented(line).size(); }

std::string_view first_word(std::string_view line) {
  line = unindented(line);
  return line.substr(0, line.find_first_of(" \t#&"));
}

std::string section_name(const Template& file, std::size_t head) {
  const auto name = file.lines[head].substr(0, file.lines[head].find('$'));
  return quote(stripped(name.substr(name.starts_with('=') ? 1 : 0)));
}

bool recognises(const OldTemplate& old, std::size_t i) {
  const auto line = old.lines[i];
  return i > 0 && !line.empty() && !is_header(line) && !is_remark(line);
}

// No loosened line begins with a tab.
OldTemplate loose_template(const OldTemplate& old) {
  std::string text;
  for (std::size_t i = 0; i < old.lines.size(); ++i) {
    const bool used = recognises(old, i) && !unindented(old.lines[i]).empty();
    text.append(used ? lowered(loosened(old.lines[i])) : "\t").append(LineArray::line_end);
  }
  return index_old("", std::move(text));
}

std::size_t near_line(const OldTemplate& loose, std::string_view line) {
  const std::string text = lowered(loosened(line));
  const std::size_t found = matchline(loose, text);
  return first_word(loose.lines[found]) == first_word(text) ? found : 0;
}

std::string difference(std::string_view line, std::string_view recognition) {
  if (loosened(line).starts_with(loosened(recognition)))
    return " has other tabs or blanks";
  const bool same = lowered(line).starts_with(lowered(recognition));
  return same ? " has other capital letters" : " has other capital letters, and tabs or blanks";
}

LineRange body_of(const NewTemplate& current, std::size_t s) {
  if (s >= current.newheads.size())
    return {};
  const bool last = s + 1 == current.newheads.size();
  const std::size_t end = last ? current.lines.size() : current.newheads[s + 1];
  return LineRange(std::min(current.newheads[s] + 1, end), end);
}

LineRange output_of(const NewTemplate& current, std::size_t s) {
  const LineRange body = body_of(current, s);
  const auto lines = static_cast<long long>(body.size());
  const auto count = lines > 0 ? std::clamp(current.counts[s], 0LL, lines) : 0;
  return LineRange(*body.begin(), *body.begin() + static_cast<std::size_t>(count));
}
