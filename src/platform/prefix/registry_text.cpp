// Parses and edits the registry's text line by line. A key's header is unescaped and folded only if
// a cheap comparison does not rule it out, which keeps a search through megabytes fast.
#include "platform/prefix/registry_text.h"

#include "platform/letter_case.h"
#include "platform/path_rules.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <utility>
#include <vector>

#include <utf8.h>

namespace {

constexpr auto npos = std::string_view::npos;

// Wine's letters for control characters, indexed by code; '.' for a character without one.
constexpr std::string_view control_names = ".......abtnvfr.............e....";

// UTF-16 as UTF-8; a surrogate without its partner becomes U+FFFD.
std::string to_utf8(std::u16string units) {
  const auto is_lead = [&](std::size_t i) { return units[i] >= 0xD800 && units[i] < 0xDC00; };
  const auto is_trail = [&](std::size_t i) { return units[i] >= 0xDC00 && units[i] < 0xE000; };
  for (std::size_t i = 0; i < units.size(); ++i) {
    if (is_lead(i) && i + 1 < units.size() && is_trail(i + 1))
      ++i;
    else if (is_lead(i) || is_trail(i))
      units[i] = 0xFFFD;
  }
  return utf8::utf16to8(units);
}

bool take(std::string_view& text, std::string_view start) {
  if (!text.starts_with(start))
    return false;
  text.remove_prefix(start.size());
  return true;
}

// Takes a number of at most `most` digits off the front of `text`; nullopt if there is no digit.
std::optional<std::uint32_t> take_number(std::string_view& text, std::size_t most, int base) {
  std::uint32_t number = 0;
  const char* const end = text.data() + std::min(most, text.size());
  const auto [stop, error] = std::from_chars(text.data(), end, number, base);
  if (error != std::errc{})
    return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(stop - text.data()));
  return number;
}

// Takes a numeric escape, \xHHHH or \OOO, off the front of `text`: a UTF-16 unit.
std::optional<char16_t> take_unit(std::string_view& text) {
  auto rest = text;
  const bool hex = take(rest, "\\x");
  if (!hex && !take(rest, "\\"))
    return std::nullopt;
  const auto unit = hex ? take_number(rest, 4, 16) : take_number(rest, 3, 8);
  if (!unit)
    return std::nullopt;
  text = rest;
  return static_cast<char16_t>(*unit);
}

// Takes any other escape off the front of `text`: one character.
char take_character(std::string_view& text) {
  const char c = text.size() > 1 ? text[1] : '\\';
  text.remove_prefix(std::min<std::size_t>(text.size(), 2));
  const auto control = c == '.' ? npos : control_names.find(c);
  return control == npos ? c : static_cast<char>(control);
}

std::string unescape(std::string_view escaped) {
  std::string text;
  while (true) {
    const auto plain = std::min(escaped.find('\\'), escaped.size());
    text += escaped.substr(0, plain);
    escaped.remove_prefix(plain);
    if (escaped.empty())
      return text;
    std::u16string units;  // of several escapes in a row: two may be one character
    while (const auto unit = take_unit(escaped))
      units += *unit;
    if (units.empty())
      text += take_character(escaped);
    else
      text += to_utf8(std::move(units));
  }
}

// The position of the unescaped character `close`, from `from` on.
std::size_t find_closing(std::string_view text, std::size_t from, char close) {
  for (std::size_t at = from; at < text.size(); ++at) {
    if (text[at] == close)
      return at;
    if (text[at] == '\\')
      ++at;
  }
  return npos;
}

// A quick test on plain characters; an escape or a non-ASCII character ends it undecided.
bool cannot_start_with(std::string_view escaped, std::string_view lowered) {
  for (const char wanted : lowered) {
    if (escaped.empty())
      return true;
    const char next = ascii_lower(escaped.front());
    if (!is_ascii(next) || !is_ascii(wanted) || (next == '\\' && !escaped.starts_with("\\\\")))
      return false;
    if (next != wanted)
      return true;
    escaped.remove_prefix(next == '\\' ? 2 : 1);
  }
  return false;
}

// Lines of the text from `begin` to `end`: those of a key, whose values begin at `body`, or those
// of a value, whose data begins there.
struct Lines {
  std::size_t begin, body, end;
};

// Whether a path stands for its key alone or also for all keys below it.
enum class Depth { key, subtree };

std::size_t line_end(std::string_view text, std::size_t from) {
  const auto at = text.find('\n', from);
  return at == npos ? text.size() : at + 1;
}

// The start of the next line that begins with "[", at or after `from`; the text's end if there is
// none. Searches for brackets because they are rarer than line ends.
std::size_t find_header(std::string_view text, std::size_t from) {
  auto at = text.find('[', from);
  while (at != npos && at > 0 && text[at - 1] != '\n')
    at = text.find('[', at + 1);
  return std::min(at, text.size());
}

// Whether a key's header, without its "[", names the key `lowered` or, if asked for, one below it.
bool matches(std::string_view header, const std::string& lowered, Depth depth) {
  const auto close = cannot_start_with(header, lowered) ? npos : find_closing(header, 0, ']');
  if (close == npos)
    return false;
  const auto path = lowercase(unescape(header.substr(0, close)));
  return path == lowered || (depth == Depth::subtree && path.starts_with(lowered + "\\"));
}

// The lines of the matching keys, in the order of the text.
std::vector<Lines> find_keys(std::string_view text, std::string_view path, Depth depth) {
  const auto lowered = lowercase(path);
  std::vector<Lines> keys;
  for (std::size_t begin = find_header(text, 0), end = begin; begin < text.size(); begin = end) {
    end = find_header(text, begin + 1);
    const auto body = line_end(text, begin);
    if (matches(text.substr(begin + 1, body - begin - 1), lowered, depth))
      keys.push_back({begin, body, end});
  }
  return keys;
}

// The position of the data on a line; nullopt if the line does not define the value.
std::optional<std::size_t> find_data(std::string_view line, const std::string& lowered_name) {
  const bool unnamed = line.starts_with('@');
  if (!unnamed && !line.starts_with('"'))
    return std::nullopt;
  const auto close = unnamed ? 0 : find_closing(line, 1, '"');
  if (close == npos)
    return std::nullopt;
  const auto name = unnamed ? std::string_view() : line.substr(1, close - 1);
  if (cannot_start_with(name, lowered_name) || lowercase(unescape(name)) != lowered_name)
    return std::nullopt;
  const auto equals = line.find_first_not_of(" \t", close + 1);
  if (equals == npos || line[equals] != '=')
    return std::nullopt;
  return std::min(line.find_first_not_of(" \t", equals + 1), line.size());
}

// Hexadecimal data continues on the next line after a backslash.
bool is_continued(std::string_view line) {
  return line.ends_with("\\\n") || line.ends_with("\\\r\n");
}

// The end of a value that starts on the line [begin, end), its continuation lines included.
std::size_t end_of_value(std::string_view text, std::size_t begin, std::size_t end) {
  while (end < text.size() && is_continued(text.substr(begin, end - begin))) {
    begin = end;
    end = line_end(text, begin);
  }
  return end;
}

// Every definition of the value, in the order of the text.
std::vector<Lines> find_values(std::string_view text, std::string_view key, std::string_view name) {
  const auto lowered = lowercase(name);
  std::vector<Lines> values;
  for (const Lines& section : find_keys(text, key, Depth::key)) {
    const auto lines = text.substr(0, section.end);
    for (std::size_t begin = section.body, end = begin; begin < section.end; begin = end) {
      end = line_end(lines, begin);
      const auto data = find_data(lines.substr(begin, end - begin), lowered);
      if (!data)
        continue;
      if (lines.substr(begin + *data).starts_with("hex"))
        end = end_of_value(lines, begin, end);
      values.push_back({begin, begin + *data, end});
    }
  }
  return values;
}

RegistryValue::Type type_for(std::uint32_t number) {
  using Type = RegistryValue::Type;
  constexpr std::array types{Type::other, Type::text, Type::expandable_text, Type::binary,
                             Type::number};
  return number < types.size() ? types[number] : Type::other;
}

// Takes "tag:" or "tag(N):" off the front of a value's data. Returns N, or `plain` for "tag:".
std::optional<std::uint32_t> take_tag(std::string_view& data, std::string_view tag,
                                      std::uint32_t plain) {
  auto rest = data;
  if (!take(rest, tag))
    return std::nullopt;
  const bool numbered = take(rest, "(");
  const auto number = numbered ? take_number(rest, 8, 16) : std::optional(plain);
  if (!number || !take(rest, numbered ? "):" : ":"))
    return std::nullopt;
  data = rest;
  return number;
}

std::optional<RegistryValue> quoted_value(std::string_view data, RegistryValue::Type type) {
  using Type = RegistryValue::Type;
  const auto close = data.starts_with('"') ? find_closing(data, 1, '"') : npos;
  if (close == npos)
    return std::nullopt;
  if (type != Type::text && type != Type::expandable_text)
    return RegistryValue{.type = Type::other};
  auto text = unescape(data.substr(1, close - 1));
  text.resize(std::min(text.find('\0'), text.size()));
  return RegistryValue{.type = type, .text = std::move(text)};
}

std::optional<RegistryValue> number_value(std::string_view digits) {
  const auto number = take_number(digits, 8, 16);
  if (!number || digits.find_first_not_of(" \t\r\n") != npos)
    return std::nullopt;
  return RegistryValue{.type = RegistryValue::Type::number, .number = *number};
}

// Bytes of one or two hexadecimal digits, separated by commas.
std::optional<std::string> parse_bytes(std::string_view data) {
  const auto has_more = [&] {
    data.remove_prefix(std::min(data.find_first_not_of(" \t\r\n\\"), data.size()));
    return !data.empty();
  };
  std::string bytes;
  while (has_more()) {
    const auto byte = take_number(data, 2, 16);
    if (!byte || (has_more() && !take(data, ",")))
      return std::nullopt;
    bytes += static_cast<char>(*byte);
  }
  return bytes;
}

// Little-endian UTF-16, up to its NUL.
std::string from_utf16(std::string_view bytes) {
  std::u16string units;
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2)
    units += static_cast<char16_t>(static_cast<unsigned char>(bytes[at]) |
                                   static_cast<unsigned char>(bytes[at + 1]) << 8);
  units.resize(std::min(units.find(u'\0'), units.size()));
  return to_utf8(std::move(units));
}

RegistryValue bytes_value(std::string bytes, RegistryValue::Type type) {
  using Type = RegistryValue::Type;
  if (type == Type::text || type == Type::expandable_text)
    return {.type = type, .text = from_utf16(bytes)};
  if (type == Type::binary)
    return {.type = type, .bytes = std::move(bytes)};
  if (type != Type::number || bytes.size() != 4)
    return {.type = Type::other};
  std::uint32_t number = 0;
  for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte)
    number = number << 8 | static_cast<unsigned char>(*byte);
  return {.type = type, .number = number};
}

// Whether the registry may be cut off within this number or these bytes.
bool is_truncated(std::string_view data) { return !data.ends_with('\n') || is_continued(data); }

std::optional<RegistryValue> parse_value(std::string_view data) {
  if (data.starts_with('"'))
    return quoted_value(data, RegistryValue::Type::text);
  if (const auto type = take_tag(data, "str", 1))
    return quoted_value(data, type_for(*type));
  if (is_truncated(data))
    return std::nullopt;
  if (take(data, "dword:"))
    return number_value(data);
  const auto type = take_tag(data, "hex", 3);
  if (!type)
    return std::nullopt;
  auto bytes = parse_bytes(data);
  if (!bytes)
    return std::nullopt;
  return bytes_value(std::move(*bytes), type_for(*type));
}

std::string digits(std::uint32_t number, int base, std::size_t least) {
  std::array<char, 32> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, base).ptr;
  const std::string text(buffer.data(), end);
  return std::string(least - std::min(least, text.size()), '0') + text;
}

// Numbers have their full width, so that any character may follow.
std::string escape(std::string_view text, std::string_view quotes) {
  std::string escaped;
  for (const char16_t unit : utf8::utf8to16(utf8::replace_invalid(text))) {
    const char c = static_cast<char>(unit);
    if (unit > 0x7F)
      escaped += "\\x" + digits(unit, 16, 4);
    else if (unit < 0x20)
      escaped += "\\" + digits(unit, 8, 3);
    else if (c == '\\' || quotes.find(c) != npos)
      escaped += {'\\', c};
    else
      escaped += c;
  }
  return escaped;
}

std::string write_bytes(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes)
    text += (text.empty() ? "" : ",") + digits(static_cast<unsigned char>(byte), 16, 2);
  return text;
}

std::string write_value(std::string_view name, const RegistryValue& value) {
  using Type = RegistryValue::Type;
  const std::string line = name.empty() ? "@=" : "\"" + escape(name, "\"") + "\"=";
  if (value.type == Type::number)
    return line + "dword:" + digits(value.number, 16, 8) + "\n";
  if (value.type == Type::binary)
    return line + "hex:" + write_bytes(value.bytes) + "\n";
  return line + (value.type == Type::text ? "\"" : "str(2):\"") + escape(value.text, "\"") + "\"\n";
}

// The text with [begin, end) replaced by `lines`. Ends the line before them if it has no end.
std::string replaced(std::string_view text, std::size_t begin, std::size_t end,
                     std::string_view lines) {
  std::string result(text.substr(0, begin));
  if (!result.empty() && !result.ends_with('\n'))
    result += '\n';
  return result.append(lines).append(text.substr(end));
}

// The text without those of its lines.
std::string without(std::string_view text, const std::vector<Lines>& removed) {
  std::string kept;
  std::size_t from = 0;
  for (const Lines& lines : removed) {
    kept += text.substr(from, lines.begin - from);
    from = lines.end;
  }
  return kept.append(text.substr(from));
}

}  // namespace

std::optional<RegistryValue> find_value(std::string_view registry, std::string_view key,
                                        std::string_view name) {
  std::optional<RegistryValue> last;
  for (const Lines& found : find_values(registry, key, name))
    if (auto value = parse_value(registry.substr(found.body, found.end - found.body)))
      last = std::move(value);
  return last;
}

std::string with_value(std::string_view registry, std::string_view key, std::string_view name,
                       const RegistryValue& value) {
  const auto line = write_value(name, value);
  if (const auto values = find_values(registry, key, name); !values.empty())
    return replaced(registry, values.back().begin, values.back().end, line);
  if (const auto keys = find_keys(registry, key, Depth::key); !keys.empty())
    return replaced(registry, keys.back().body, keys.back().body, line);
  if (registry.empty())
    registry = "WINE REGISTRY Version 2\n";
  const auto section = "\n[" + escape(key, "[]") + "]\n" + line;
  return replaced(registry, registry.size(), registry.size(), section);
}

std::string without_value(std::string_view registry, std::string_view key, std::string_view name) {
  return without(registry, find_values(registry, key, name));
}

std::string without_key(std::string_view registry, std::string_view key) {
  return without(registry, find_keys(registry, key, Depth::subtree));
}
