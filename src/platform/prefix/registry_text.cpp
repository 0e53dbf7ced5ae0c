// Reads and changes the registry's text line by line. A key's path is looked at closely only when
// its plain characters agree with those asked for, which keeps a search through megabytes quick.
#include "platform/prefix/registry_text.h"

#include "platform/path_rules.h"
#include "platform/prefix/letter_case.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <utility>

#include <utf8.h>

namespace {

constexpr auto npos = std::string_view::npos;

// Wine's names for control characters, at the place of the character's code; '.' has no name.
constexpr std::string_view control_names = ".......abtnvfr.............e....";

bool is_hex_digit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
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

// Takes at most `most` digits off the front of `text`; nothing when it begins with none.
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
  const bool hex = text.starts_with("\\x");
  if (!text.starts_with('\\'))
    return std::nullopt;
  auto rest = text.substr(hex ? 2 : 1);
  const auto unit = hex ? take_number(rest, 4, 16) : take_number(rest, 3, 8);
  if (!unit)
    return std::nullopt;
  text = rest;
  return static_cast<char16_t>(*unit);
}

// Takes any other escape, or a plain byte, off the front of `text`.
char take_byte(std::string_view& text) {
  const bool escaped = text.size() > 1 && text.front() == '\\';
  const char c = text[escaped ? 1 : 0];
  text.remove_prefix(escaped ? 2 : 1);
  const auto control = escaped && c != '.' ? control_names.find(c) : npos;
  return control == npos ? c : static_cast<char>(control);
}

// Two numeric escapes in a row may be one character.
std::string unescape(std::string_view escaped) {
  std::string text;
  std::u16string units;
  while (!escaped.empty()) {
    if (const auto unit = take_unit(escaped)) {
      units += *unit;
      continue;
    }
    text += to_utf8(std::exchange(units, {}));
    text += take_byte(escaped);
  }
  return text + to_utf8(std::move(units));
}

// Where the character that ends an escaped text stands, from `from` on.
std::size_t find_closing(std::string_view text, std::size_t from, char close) {
  for (std::size_t at = from; at < text.size(); ++at) {
    if (text[at] == close)
      return at;
    if (text[at] == '\\')
      ++at;
  }
  return npos;
}

// Tells cheaply that an escaped text cannot begin with `lowered`: a plain character differs.
bool differs(std::string_view escaped, std::string_view lowered) {
  std::size_t at = 0;
  for (const char wanted : lowered) {
    if (at == escaped.size())
      return true;
    if (!is_ascii(escaped[at]) || !is_ascii(wanted))
      return false;
    if (escaped[at] == '\\') {
      if (wanted != '\\' || escaped.substr(at, 2) != "\\\\")
        return false;
      ++at;
    } else if (ascii_lower(escaped[at]) != wanted) {
      return true;
    }
    ++at;
  }
  return false;
}

// A key's lines: its header at `begin`, its values from `body` to `end`, where the next key begins.
struct Section {
  std::size_t begin;
  std::size_t body;
  std::size_t end;
};

// A value's lines, and its data behind the "=".
struct ValueLines {
  std::size_t begin;
  std::size_t end;
  std::string_view data;
};

// Which keys are meant: the one of a path, those that have the path as the beginning of theirs and
// only a name behind it, or the one of a path and all below it.
enum class Depth { key, beside, subtree };

std::size_t line_end(std::string_view text, std::size_t from) {
  const auto at = text.find('\n', from);
  return at == npos ? text.size() : at + 1;
}

// Where the next line that begins with "[" does, at or after `from`; the text's end when none does.
// Brackets are rarer than lines.
std::size_t find_header(std::string_view text, std::size_t from) {
  auto at = text.find('[', from);
  while (at != npos && at > 0 && text[at - 1] != '\n')
    at = text.find('[', at + 1);
  return std::min(at, text.size());
}

// How many backslashes an escaped text stands for, at least.
std::ptrdiff_t count_backslashes(std::string_view escaped) {
  std::ptrdiff_t count = 0;
  for (auto at = escaped.find("\\\\"); at != npos; at = escaped.find("\\\\", at + 2))
    ++count;
  return count;
}

// Whether a key's header, without its "[", names a key that is meant.
bool names(std::string_view header, const std::string& lowered, Depth depth) {
  const auto close = find_closing(header, 0, ']');
  if (close == npos)
    return false;
  const auto escaped = header.substr(0, close);
  const bool beside = depth == Depth::beside;
  if (beside && count_backslashes(escaped) > std::count(lowered.begin(), lowered.end(), '\\'))
    return false;
  const auto path = lowercase(unescape(escaped));
  if (beside)
    return path.starts_with(lowered) && path.find('\\', lowered.size()) == npos;
  return path == lowered || (depth == Depth::subtree && path.starts_with(lowered + "\\"));
}

// Calls `use` with every section of the keys that are meant, in the order of the text.
template <class Use>
void for_each_section(std::string_view text, std::string_view path, Depth depth, Use use) {
  const auto lowered = lowercase(path);
  for (std::size_t begin = find_header(text, 0), end = begin; begin < text.size(); begin = end) {
    end = find_header(text, begin + 1);
    if (differs(text.substr(begin + 1), lowered))
      continue;
    const Section section{begin, line_end(text, begin), end};
    if (names(text.substr(begin + 1, section.body - begin - 1), lowered, depth))
      use(section);
  }
}

// Where the data begins on a value's line; nothing when the line does not give the value `name`.
std::optional<std::size_t> find_data(std::string_view line, const std::string& lowered_name) {
  const bool unnamed = line.starts_with('@');
  if (!unnamed && !line.starts_with('"'))
    return std::nullopt;
  const auto close = unnamed ? 0 : find_closing(line, 1, '"');
  if (close == npos)
    return std::nullopt;
  const auto name = unnamed ? std::string_view() : line.substr(1, close - 1);
  if (differs(name, lowered_name) || lowercase(unescape(name)) != lowered_name)
    return std::nullopt;
  const auto equals = line.find_first_not_of(" \t", close + 1);
  if (equals == npos || line[equals] != '=')
    return std::nullopt;
  return std::min(line.find_first_not_of(" \t", equals + 1), line.size());
}

// Hexadecimal data goes on behind a backslash.
bool is_continued(std::string_view line) {
  return line.ends_with("\\\n") || line.ends_with("\\\r\n");
}

// The end of the lines of a value whose last one so far is [begin, end).
std::size_t end_of_value(std::string_view text, std::size_t begin, std::size_t end) {
  while (end < text.size() && is_continued(text.substr(begin, end - begin))) {
    begin = end;
    end = line_end(text, begin);
  }
  return end;
}

// Calls `use` with every definition of the value, in the order of the text.
template <class Use>
void for_each_value(std::string_view text, std::string_view key, std::string_view name, Use use) {
  const auto lowered = lowercase(name);
  for_each_section(text, key, Depth::key, [&](const Section& section) {
    const auto lines = text.substr(0, section.end);
    for (std::size_t begin = section.body, end = begin; begin < section.end; begin = end) {
      end = line_end(lines, begin);
      const auto offset = find_data(lines.substr(begin, end - begin), lowered);
      if (!offset)
        continue;
      const auto data = begin + *offset;
      if (lines.substr(data).starts_with("hex"))
        end = end_of_value(lines, begin, end);
      use(ValueLines{begin, end, lines.substr(data, end - data)});
    }
  });
}

RegistryValue::Type type_for(std::uint32_t number) {
  using Type = RegistryValue::Type;
  constexpr std::array types{Type::other, Type::text, Type::expandable_text, Type::binary,
                             Type::number};
  return number < types.size() ? types[number] : Type::other;
}

// Takes "tag:" or "tag(N):" off the front of a value's data and gives N, or `plain` without one.
std::optional<std::uint32_t> take_tag(std::string_view& data, std::string_view tag,
                                      std::uint32_t plain) {
  if (!data.starts_with(tag))
    return std::nullopt;
  auto rest = data.substr(tag.size());
  std::optional number(plain);
  if (rest.starts_with('(')) {
    rest.remove_prefix(1);
    number = take_number(rest, 8, 16);
    if (!number || !rest.starts_with(')'))
      return std::nullopt;
    rest.remove_prefix(1);
  }
  if (!rest.starts_with(':'))
    return std::nullopt;
  data = rest.substr(1);
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

// Bytes of two digits, each but the last followed by a comma.
std::optional<std::string> parse_bytes(std::string_view data) {
  const auto skip_blanks = [&] {
    data.remove_prefix(std::min(data.find_first_not_of(" \t\r\n\\"), data.size()));
  };
  std::string bytes;
  for (skip_blanks(); !data.empty(); skip_blanks()) {
    const auto byte = take_number(data, 2, 16);
    if (!byte)
      return std::nullopt;
    bytes += static_cast<char>(*byte);
    skip_blanks();
    if (data.empty())
      break;
    if (data.front() != ',')
      return std::nullopt;
    data.remove_prefix(1);
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

// Whether the text may end in the middle of these numbers or bytes.
bool is_truncated(std::string_view data) { return !data.ends_with('\n') || is_continued(data); }

std::optional<RegistryValue> parse_value(std::string_view data) {
  if (data.starts_with('"'))
    return quoted_value(data, RegistryValue::Type::text);
  if (const auto type = take_tag(data, "str", 1))
    return quoted_value(data, type_for(*type));
  if (is_truncated(data))
    return std::nullopt;
  if (data.starts_with("dword:"))
    return number_value(data.substr(6));
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

// One unit as Wine escapes it: a number takes its full width where the next unit could be read as
// a digit of it.
std::string escape_unit(char16_t unit, char16_t next, std::string_view quotes) {
  const char next_char = next < 0x80 ? static_cast<char>(next) : '\0';
  if (unit > 0x7F)
    return "\\x" + digits(unit, 16, is_hex_digit(next_char) ? 4 : 1);
  const char c = static_cast<char>(unit);
  if (unit >= control_names.size())
    return c == '\\' || quotes.find(c) != npos ? std::string{'\\', c} : std::string{c};
  if (control_names[unit] != '.')
    return {'\\', control_names[unit]};
  return "\\" + digits(unit, 8, next_char >= '0' && next_char <= '7' ? 3 : 1);
}

std::string escape(std::string_view text, std::string_view quotes) {
  const auto units = utf8::utf8to16(utf8::replace_invalid(text));
  std::string escaped;
  for (std::size_t i = 0; i < units.size(); ++i)
    escaped += escape_unit(units[i], i + 1 < units.size() ? units[i + 1] : u'\0', quotes);
  return escaped;
}

// Bytes as Wine writes them, a new line beginning behind column 76.
std::string write_bytes(std::string_view bytes, std::size_t column, std::string_view newline) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    text += digits(static_cast<unsigned char>(bytes[i]), 16, 2);
    column += 3;
    if (i + 1 == bytes.size())
      break;
    text += ',';
    if (column <= 76)
      continue;
    text.append("\\").append(newline).append("  ");
    column = 2;
  }
  return text;
}

std::string write_value(std::string_view name, const RegistryValue& value,
                        std::string_view newline) {
  std::string line = name.empty() ? "@=" : "\"" + escape(name, "\"") + "\"=";
  using Type = RegistryValue::Type;
  if (value.type == Type::number)
    line += "dword:" + digits(value.number, 16, 8);
  if (value.type == Type::binary)
    line += "hex:" + write_bytes(value.bytes, line.size() + 4, newline);
  if (value.type == Type::expandable_text)
    line += "str(2):";
  if (value.type == Type::text || value.type == Type::expandable_text)
    line += "\"" + escape(value.text, "\"") + "\"";
  return line.append(newline);
}

std::string_view newline_of(std::string_view text) {
  const auto end = text.find('\n');
  return end != npos && end > 0 && text[end - 1] == '\r' ? "\r\n" : "\n";
}

// `at`, a line's beginning, moved back over blank lines.
std::size_t skip_blank_lines_back(std::string_view text, std::size_t at) {
  while (at > 0 && text[at - 1] == '\n') {
    const auto end = text.substr(0, at - 1).ends_with('\r') ? at - 2 : at - 1;
    if (end > 0 && text[end - 1] != '\n')
      break;
    at = end;
  }
  return at;
}

// The text with `lines` in place of [begin, end); what stands before them is a whole line.
std::string replaced(std::string_view text, std::size_t begin, std::size_t end,
                     std::string_view lines, std::string_view newline) {
  std::string result(text.substr(0, begin));
  if (!result.empty() && !result.ends_with('\n'))
    result += newline;
  return result.append(lines).append(text.substr(end));
}

}  // namespace

std::optional<RegistryValue> find_value(std::string_view registry, std::string_view key,
                                        std::string_view name) {
  std::optional<RegistryValue> last;
  for_each_value(registry, key, name, [&](const ValueLines& found) {
    if (auto value = parse_value(found.data))
      last = std::move(value);
  });
  return last;
}

void append_sibling_keys(std::string_view registry, std::string_view key, std::string& part) {
  for_each_section(registry, key.substr(0, key.rfind('\\') + 1), Depth::beside,
                   [&](const Section& section) {
                     part += registry.substr(section.begin, section.end - section.begin);
                   });
}

std::size_t find_last_key(std::string_view registry, std::size_t from) {
  for (std::size_t at = registry.size(); at-- > std::max<std::size_t>(from, 1);)
    if (registry[at] == '[' && registry[at - 1] == '\n')
      return at;
  return 0;
}

std::string with_value(std::string_view registry, std::string_view key, std::string_view name,
                       const RegistryValue& value) {
  if (value.type == RegistryValue::Type::other)
    return std::string(registry);
  const auto newline = newline_of(registry);
  const auto line = write_value(name, value, newline);
  std::optional<ValueLines> last;
  for_each_value(registry, key, name, [&](const ValueLines& found) { last = found; });
  if (last)
    return replaced(registry, last->begin, last->end, line, newline);
  std::optional<std::size_t> key_end;
  for_each_section(registry, key, Depth::key, [&](const Section& section) {
    key_end = skip_blank_lines_back(registry, section.end);
  });
  if (key_end)
    return replaced(registry, *key_end, *key_end, line, newline);
  if (registry.empty())
    registry = "WINE REGISTRY Version 2\n";
  const std::string end(newline);
  const auto section = end + "[" + escape(key, "[]") + "]" + end + line;
  return replaced(registry, registry.size(), registry.size(), section, newline);
}

std::string without_value(std::string_view registry, std::string_view key, std::string_view name) {
  std::string result;
  std::size_t kept = 0;
  for_each_value(registry, key, name, [&](const ValueLines& found) {
    result += registry.substr(kept, found.begin - kept);
    kept = found.end;
  });
  return result.append(registry.substr(kept));
}

std::string without_key(std::string_view registry, std::string_view key) {
  std::string result;
  std::size_t kept = 0;
  for_each_section(registry, key, Depth::subtree, [&](const Section& section) {
    const auto begin = std::max(kept, skip_blank_lines_back(registry, section.begin));
    result += registry.substr(kept, begin - kept);
    kept = std::max(kept, skip_blank_lines_back(registry, section.end));
  });
  return result.append(registry.substr(kept));
}
