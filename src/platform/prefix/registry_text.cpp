// Finds and edits the lines of the registry's text. Keys and names are compared in the form in
// which Wine writes them, which keeps a search through megabytes fast.
#include "platform/prefix/registry_text.h"

#include "platform/letter_case.h"
#include "platform/path_rules.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <utility>
#include <vector>

#include <utf8.h>

namespace {

constexpr auto npos = std::string_view::npos;
using Parts = std::vector<std::string_view>;

std::string hexadecimal(std::uint32_t number, int least_digits) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%0*x", least_digits, number);
  return text.data();
}

// As Wine escapes a text: a code has four digits only where another digit follows. `marks` are
// escaped, too.
std::string escape(std::string_view text, std::string_view marks) {
  const auto units = utf8::utf8to16(utf8::replace_invalid(text));
  std::string escaped;
  for (std::size_t i = 0; i < units.size(); ++i) {
    const char c = static_cast<char>(units[i]);
    const char16_t next = units[i + 1];  // NUL after the last
    if (units[i] < 0x20 || units[i] > 0x7F)
      escaped += "\\x" + hexadecimal(units[i], next < 0x80 && std::isxdigit(next) ? 4 : 1);
    else if (c == '\\' || marks.find(c) != npos)
      escaped += {'\\', c};
    else
      escaped += c;
  }
  return escaped;
}

bool starts_with(std::string_view text, std::string_view start) {
  const auto equal = [](char a, char b) { return a == b || ascii_lower(a) == ascii_lower(b); };
  return std::ranges::equal(text.substr(0, start.size()), start, equal);
}

// The next line that begins with "[": brackets are searched for, as they are rarer than line ends.
std::size_t find_header(std::string_view text, std::size_t from) {
  auto at = text.find('[', from);
  while (at != npos && text[at - 1] != '\n')
    at = text.find('[', at + 1);
  return std::min(at, text.size());
}

// The lines of each key of that path, its header first; with those of the keys below it if asked
// for.
Parts find_keys(std::string_view text, std::string_view path, bool with_subkeys = false) {
  const auto start = "[" + escape(path, "[]");
  const auto header = start + "]", subkey_start = start + "\\\\";
  Parts keys;
  for (auto begin = find_header(text, 1), end = begin; begin < text.size(); begin = end) {
    end = find_header(text, begin + 1);
    const auto lines = text.substr(begin, end - begin);
    if (starts_with(lines, header) || (with_subkeys && starts_with(lines, subkey_start)))
      keys.push_back(lines);
  }
  return keys;
}

std::size_t line_length(std::string_view text) {
  return std::min(text.find('\n'), text.size() - 1) + 1;
}

// What the lines of each definition of the value begin with, up to its data.
std::string value_start(std::string_view name) {
  return name.empty() ? "@=" : "\"" + escape(name, "\"") + "\"=";
}

// Hexadecimal data continues on the next line after a backslash.
bool is_continued(std::string_view lines) {
  return lines.ends_with("\\\n") || lines.ends_with("\\\r\n");
}

// The lines of each definition of the value.
Parts find_values(std::string_view text, std::string_view key, std::string_view name) {
  const auto start = value_start(name);
  Parts values;
  for (auto lines : find_keys(text, key))
    while (!lines.empty()) {
      auto length = line_length(lines);
      if (starts_with(lines, start)) {
        while (length < lines.size() && is_continued(lines.substr(0, length)))
          length += line_length(lines.substr(length));
        values.push_back(lines.substr(0, length));
      }
      lines.remove_prefix(length);
    }
  return values;
}

std::string without_parts(std::string_view text, const Parts& removed) {
  std::string kept;
  for (const auto part : removed) {
    const auto before = static_cast<std::size_t>(part.data() - text.data());
    kept += text.substr(0, before);
    text.remove_prefix(before + part.size());
  }
  return kept.append(text);
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

// Takes what follows a backslash off the front of `text`: \xHHHH, \OOO, a control character's
// letter, or the character itself. Returns a UTF-16 unit.
char16_t take_escaped(std::string_view& text) {
  constexpr std::string_view letters = "abtnvfre", controls = "\a\b\t\n\v\f\r\x1b";
  auto digits = text;
  const bool is_hexadecimal = take(digits, "x");
  if (const auto unit = take_number(digits, is_hexadecimal ? 4 : 3, is_hexadecimal ? 16 : 8)) {
    text = digits;
    return static_cast<char16_t>(*unit);
  }
  const char c = text.front();
  text.remove_prefix(1);
  const auto letter = letters.find(c);
  return static_cast<unsigned char>(letter == npos ? c : controls[letter]);
}

std::string to_utf8(const std::u16string& units) try {
  return utf8::utf16to8(units);
} catch (const utf8::invalid_utf16&) {  // a surrogate without its partner
  return "\uFFFD";
}

// A text in quotes, unescaped; nullopt if it has no end.
std::optional<std::string> parse_quoted(std::string_view data) {
  if (!take(data, "\""))
    return std::nullopt;
  std::string text;
  std::u16string units;  // of several escapes in a row: two may be one character
  while (!data.empty()) {
    const char c = data.front();
    data.remove_prefix(1);
    if (c == '\\' && !data.empty()) {
      units += take_escaped(data);
      continue;
    }
    text += to_utf8(std::exchange(units, {}));
    if (c == '"')
      return text;
    text += c;
  }
  return std::nullopt;
}

// Bytes of little-endian UTF-16 up to a NUL, in hexadecimal digits; nullopt if there is more.
std::optional<std::string> parse_bytes(std::string_view data) {
  std::u16string units;
  for (int shift = 0; const auto byte = take_number(data, 2, 16); shift ^= 8) {
    if (shift == 0)
      units += u'\0';
    units.back() = static_cast<char16_t>(units.back() | *byte << shift);
    data.remove_prefix(std::min(data.find_first_not_of(", \\\r\n"), data.size()));
  }
  units.resize(std::min(units.find(u'\0'), units.size()));
  return data.empty() ? std::optional(to_utf8(units)) : std::nullopt;
}

std::optional<RegistryValue> parse_value(std::string_view data) {
  using Type = RegistryValue::Type;
  const bool truncated = !data.ends_with('\n') || is_continued(data);  // which a text is not
  if (take(data, "dword:")) {
    const auto number = take_number(data, 8, 16);
    const bool ends = !truncated && data.find_first_not_of("\r\n") == npos;
    return number && ends ? std::optional(RegistryValue{Type::number, std::to_string(*number)})
                          : std::nullopt;
  }
  const bool expandable = data.starts_with("hex(2):") || take(data, "str(2):");
  // Wine writes a text as bytes if it does not end in NUL.
  const bool bytes = take(data, "hex(1):") || take(data, "hex(2):");
  const auto text = bytes ? parse_bytes(data) : parse_quoted(data);
  if (!text || (bytes && truncated))
    return std::nullopt;
  return RegistryValue{expandable ? Type::expandable_text : Type::text,
                       text->substr(0, text->find('\0'))};
}

// A decimal number of 32 bits, signed or unsigned.
std::optional<std::uint32_t> parse_number(const std::string& data) {
  std::int64_t number = 0;
  const char* const end = data.data() + data.size();
  const auto [stop, error] = std::from_chars(data.data(), end, number);
  const bool fits = number >= std::numeric_limits<std::int32_t>::min() &&
                    number <= std::numeric_limits<std::uint32_t>::max();
  if (error != std::errc{} || stop != end || !fits)
    return std::nullopt;
  return static_cast<std::uint32_t>(number);
}

// The data as Wine writes it; nullopt if it is not of the type.
std::optional<std::string> write_data(const std::string& data, const std::string& type) {
  const auto lowered = lowercase(type);
  if (lowered.empty() || lowered == "reg_sz")
    return "\"" + escape(data, "\"") + "\"";
  if (lowered == "reg_expand_sz")
    return "str(2):\"" + escape(data, "\"") + "\"";
  const auto number = parse_number(data);
  if (number && lowered == "reg_dword")
    return "dword:" + hexadecimal(*number, 8);
  if (!number || lowered != "reg_binary")
    return std::nullopt;
  std::string bytes = "hex:";
  for (int shift = 0; shift < 32; shift += 8)
    bytes += (shift == 0 ? "" : ",") + hexadecimal(*number >> shift & 0xFF, 2);
  return bytes;
}

}  // namespace

std::optional<RegistryValue> find_value(std::string_view registry, std::string_view key,
                                        std::string_view name) {
  std::optional<RegistryValue> last;
  for (const auto lines : find_values(registry, key, name))
    if (auto value = parse_value(lines.substr(value_start(name).size())))
      last = std::move(value);
  return last;
}

std::optional<std::string> with_value(std::string_view registry, std::string_view key,
                                      std::string_view name, const std::string& data,
                                      const std::string& type) {
  const auto written = write_data(data, type);
  if (!written)
    return std::nullopt;
  auto text = without_parts(registry, find_values(registry, key, name));
  if (text.empty())
    text = "WINE REGISTRY Version 2";
  if (!text.ends_with('\n'))
    text += '\n';
  if (find_keys(text, key).empty())
    text += "\n[" + escape(key, "[]") + "]\n";
  const auto lines = find_keys(text, key).back();
  const auto body = static_cast<std::size_t>(lines.data() - text.data()) + line_length(lines);
  return text.insert(body, value_start(name) + *written + "\n");
}

std::optional<std::string> without(std::string_view registry, std::string_view key,
                                   std::string_view name) {
  const auto found =
      name.empty() ? find_keys(registry, key, true) : find_values(registry, key, name);
  return found.empty() ? std::nullopt : std::optional(without_parts(registry, found));
}
