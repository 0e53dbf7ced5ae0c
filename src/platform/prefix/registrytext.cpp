// Reads and changes the registry's text line by line. A key's path is looked at closely only when
// its plain characters agree with those asked for, which keeps a search through megabytes quick.
#include "platform/prefix/registrytext.h"

#include "platform/prefix/lettercase.h"
#include "platform/prefix/utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <utility>

namespace {

constexpr auto npos = std::string_view::npos;

// Wine's names for control characters, at the place of the character's code; '.' has no name.
constexpr std::string_view controlnames = ".......abtnvfr.............e....";

constexpr char32_t replacement = 0xFFFD;  // what stands for text that is damaged

bool isplain(char c) { return static_cast<unsigned char>(c) < 0x80; }
bool ishexdigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
char asciilower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

// Collects UTF-8 text from UTF-16 units and from bytes that are UTF-8 already.
class TextBuilder {
public:
  void byte(char c) {
    endpair();
    text += c;
  }

  void unit(std::uint32_t unit) {
    if (unit >= 0xDC00 && unit <= 0xDFFF && lead != 0) {
      appendutf8(text, 0x10000 + ((lead - 0xD800) << 10) + (unit - 0xDC00));
      lead = 0;
      return;
    }
    endpair();
    if (unit >= 0xD800 && unit <= 0xDBFF)
      lead = unit;
    else
      appendutf8(text, unit >= 0xDC00 && unit <= 0xDFFF ? replacement : unit);
  }

  std::string finish() {
    endpair();
    return std::move(text);
  }

private:
  void endpair() {
    if (lead != 0)
      appendutf8(text, replacement);
    lead = 0;
  }

  std::string text;
  std::uint32_t lead = 0;  // the first half of a surrogate pair, waiting for the second
};

// Takes at most `most` digits off the front of `text`; nothing when it begins with none.
std::optional<std::uint32_t> takenumber(std::string_view& text, std::size_t most, int base) {
  std::uint32_t number = 0;
  const char* const end = text.data() + std::min(most, text.size());
  const auto [stop, error] = std::from_chars(text.data(), end, number, base);
  if (error != std::errc{})
    return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(stop - text.data()));
  return number;
}

// Takes one escape off the front of `text`, its backslash already gone.
void unescapeone(std::string_view& text, TextBuilder& into) {
  const char c = text.front();
  if (const auto octal = takenumber(text, 3, 8))
    return into.unit(*octal);
  text.remove_prefix(1);
  if (c == 'x') {
    const auto unit = takenumber(text, 4, 16);
    return unit ? into.unit(*unit) : into.byte(c);
  }
  const auto control = c == '.' ? npos : controlnames.find(c);
  into.byte(control == npos ? c : static_cast<char>(control));
}

std::string unescape(std::string_view text) {
  TextBuilder into;
  while (!text.empty()) {
    const char c = text.front();
    if (c == '\\' && text.size() > 1) {
      text.remove_prefix(1);
      unescapeone(text, into);
    } else {
      into.byte(c);
      text.remove_prefix(1);
    }
  }
  return into.finish();
}

// Where the character that ends an escaped text stands, from `from` on.
std::size_t findclosing(std::string_view text, std::size_t from, char close) {
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
    if (!isplain(escaped[at]) || !isplain(wanted))
      return false;
    if (escaped[at] == '\\') {
      if (wanted != '\\' || escaped.substr(at, 2) != "\\\\")
        return false;
      ++at;
    } else if (asciilower(escaped[at]) != wanted) {
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
struct Entry {
  std::size_t begin;
  std::size_t end;
  std::string_view data;
};

// Which keys are meant: the one of a path, those that have the path as the beginning of theirs and
// only a name behind it, or the one of a path and all below it.
enum class Depth { key, beside, subtree };

std::size_t lineend(std::string_view text, std::size_t from) {
  const auto at = text.find('\n', from);
  return at == npos ? text.size() : at + 1;
}

// Where the next line that begins with "[" does, at or after `from`; the text's end when none does.
// Brackets are rarer than lines.
std::size_t nextheader(std::string_view text, std::size_t from) {
  auto at = text.find('[', from);
  while (at != npos && at > 0 && text[at - 1] != '\n')
    at = text.find('[', at + 1);
  return std::min(at, text.size());
}

// How many backslashes an escaped text stands for, at least.
std::ptrdiff_t countbackslashes(std::string_view escaped) {
  std::ptrdiff_t count = 0;
  for (auto at = escaped.find("\\\\"); at != npos; at = escaped.find("\\\\", at + 2))
    ++count;
  return count;
}

// Whether a key's header, without its "[", names a key that is meant.
bool names(std::string_view header, const std::string& lowered, Depth depth) {
  const auto close = findclosing(header, 0, ']');
  if (close == npos)
    return false;
  const auto escaped = header.substr(0, close);
  const bool beside = depth == Depth::beside;
  if (beside && countbackslashes(escaped) > std::count(lowered.begin(), lowered.end(), '\\'))
    return false;
  const auto path = lowercase(unescape(escaped));
  if (beside)
    return path.starts_with(lowered) && path.find('\\', lowered.size()) == npos;
  return path == lowered || (depth == Depth::subtree && path.starts_with(lowered + "\\"));
}

// Calls `use` with every section of the keys that are meant, in the order of the text.
template <class Use>
void eachsection(std::string_view text, std::string_view path, Depth depth, Use use) {
  const auto lowered = lowercase(path);
  for (std::size_t begin = nextheader(text, 0), end = begin; begin < text.size(); begin = end) {
    end = nextheader(text, begin + 1);
    if (differs(text.substr(begin + 1), lowered))
      continue;
    const Section section{begin, lineend(text, begin), end};
    if (names(text.substr(begin + 1, section.body - begin - 1), lowered, depth))
      use(section);
  }
}

// Where the data begins on a value's line; nothing when the line does not give the value `name`.
std::optional<std::size_t> finddata(std::string_view line, const std::string& loweredname) {
  const bool unnamed = line.starts_with('@');
  if (!unnamed && !line.starts_with('"'))
    return std::nullopt;
  const auto close = unnamed ? 0 : findclosing(line, 1, '"');
  if (close == npos)
    return std::nullopt;
  const auto name = unnamed ? std::string_view() : line.substr(1, close - 1);
  if (differs(name, loweredname) || lowercase(unescape(name)) != loweredname)
    return std::nullopt;
  const auto equals = line.find_first_not_of(" \t", close + 1);
  if (equals == npos || line[equals] != '=')
    return std::nullopt;
  return std::min(line.find_first_not_of(" \t", equals + 1), line.size());
}

// Hexadecimal data goes on behind a backslash.
bool goeson(std::string_view line) { return line.ends_with("\\\n") || line.ends_with("\\\r\n"); }

// The end of the lines of a value whose last one so far is [begin, end).
std::size_t lastlineend(std::string_view text, std::size_t begin, std::size_t end) {
  while (end < text.size() && goeson(text.substr(begin, end - begin))) {
    begin = end;
    end = lineend(text, begin);
  }
  return end;
}

// Calls `use` with every entry that gives the value, in the order of the text.
template <class Use>
void eachentry(std::string_view text, std::string_view key, std::string_view name, Use use) {
  const auto lowered = lowercase(name);
  eachsection(text, key, Depth::key, [&](const Section& section) {
    const auto lines = text.substr(0, section.end);
    for (std::size_t begin = section.body, end = begin; begin < section.end; begin = end) {
      end = lineend(lines, begin);
      const auto offset = finddata(lines.substr(begin, end - begin), lowered);
      if (!offset)
        continue;
      const auto data = begin + *offset;
      if (lines.substr(data).starts_with("hex"))
        end = lastlineend(lines, begin, end);
      use(Entry{begin, end, lines.substr(data, end - data)});
    }
  });
}

RegistryValue::Type typefor(std::uint32_t number) {
  using Type = RegistryValue::Type;
  constexpr std::array types{Type::other, Type::text, Type::expandtext, Type::binary, Type::number};
  return number < types.size() ? types[number] : Type::other;
}

// Takes "tag:" or "tag(N):" off the front of a value's data and gives N, or `plain` without one.
std::optional<std::uint32_t> taketag(std::string_view& data, std::string_view tag,
                                     std::uint32_t plain) {
  if (!data.starts_with(tag))
    return std::nullopt;
  auto rest = data.substr(tag.size());
  std::optional number(plain);
  if (rest.starts_with('(')) {
    rest.remove_prefix(1);
    number = takenumber(rest, 8, 16);
    if (!number || !rest.starts_with(')'))
      return std::nullopt;
    rest.remove_prefix(1);
  }
  if (!rest.starts_with(':'))
    return std::nullopt;
  data = rest.substr(1);
  return number;
}

std::optional<RegistryValue> quotedvalue(std::string_view data, RegistryValue::Type type) {
  using Type = RegistryValue::Type;
  const auto close = data.starts_with('"') ? findclosing(data, 1, '"') : npos;
  if (close == npos)
    return std::nullopt;
  if (type != Type::text && type != Type::expandtext)
    return RegistryValue{.type = Type::other};
  auto text = unescape(data.substr(1, close - 1));
  text.resize(std::min(text.find('\0'), text.size()));
  return RegistryValue{.type = type, .text = std::move(text)};
}

std::optional<RegistryValue> numbervalue(std::string_view digits) {
  const auto number = takenumber(digits, 8, 16);
  if (!number || digits.find_first_not_of(" \t\r\n") != npos)
    return std::nullopt;
  return RegistryValue{.type = RegistryValue::Type::number, .number = *number};
}

// Bytes of two digits, each but the last followed by a comma.
std::optional<std::string> readbytes(std::string_view data) {
  const auto skipblanks = [&] {
    data.remove_prefix(std::min(data.find_first_not_of(" \t\r\n\\"), data.size()));
  };
  std::string bytes;
  for (skipblanks(); !data.empty(); skipblanks()) {
    const auto byte = takenumber(data, 2, 16);
    if (!byte)
      return std::nullopt;
    bytes += static_cast<char>(*byte);
    skipblanks();
    if (data.empty())
      break;
    if (data.front() != ',')
      return std::nullopt;
    data.remove_prefix(1);
  }
  return bytes;
}

// The text up to its NUL that is kept as UTF-16, the lower byte of each unit first.
std::string fromutf16(std::string_view bytes) {
  TextBuilder into;
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
    const auto low = static_cast<unsigned char>(bytes[at]);
    const auto high = static_cast<unsigned char>(bytes[at + 1]);
    if (low == 0 && high == 0)
      break;
    into.unit(static_cast<std::uint32_t>(high << 8 | low));
  }
  return into.finish();
}

RegistryValue bytesvalue(std::string bytes, RegistryValue::Type type) {
  using Type = RegistryValue::Type;
  if (type == Type::text || type == Type::expandtext)
    return {.type = type, .text = fromutf16(bytes)};
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
bool iscutoff(std::string_view data) { return !data.ends_with('\n') || goeson(data); }

std::optional<RegistryValue> readvalue(std::string_view data) {
  if (data.starts_with('"'))
    return quotedvalue(data, RegistryValue::Type::text);
  if (const auto type = taketag(data, "str", 1))
    return quotedvalue(data, typefor(*type));
  if (iscutoff(data))
    return std::nullopt;
  if (data.starts_with("dword:"))
    return numbervalue(data.substr(6));
  const auto type = taketag(data, "hex", 3);
  if (!type)
    return std::nullopt;
  auto bytes = readbytes(data);
  if (!bytes)
    return std::nullopt;
  return bytesvalue(std::move(*bytes), typefor(*type));
}

std::u16string toutf16(std::string_view text) {
  std::u16string units;
  while (!text.empty()) {
    char32_t character = 0;
    const auto length = decodeutf8(text, character);
    text.remove_prefix(std::max<std::size_t>(length, 1));
    if (length == 0) {
      units += static_cast<char16_t>(replacement);
    } else if (character < 0x10000) {
      units += static_cast<char16_t>(character);
    } else {
      units += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
      units += static_cast<char16_t>(0xDC00 + (character & 0x3FF));
    }
  }
  return units;
}

std::string digits(std::uint32_t number, int base, std::size_t least) {
  std::array<char, 32> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, base).ptr;
  const std::string text(buffer.data(), end);
  return std::string(least - std::min(least, text.size()), '0') + text;
}

// One unit as Wine escapes it: a number takes its full width where the next unit could be read as
// a digit of it.
std::string escapeunit(char16_t unit, char16_t next, std::string_view quotes) {
  const char nextchar = next < 0x80 ? static_cast<char>(next) : '\0';
  if (unit > 0x7F)
    return "\\x" + digits(unit, 16, ishexdigit(nextchar) ? 4 : 1);
  const char c = static_cast<char>(unit);
  if (unit >= controlnames.size())
    return c == '\\' || quotes.find(c) != npos ? std::string{'\\', c} : std::string{c};
  if (controlnames[unit] != '.')
    return {'\\', controlnames[unit]};
  return "\\" + digits(unit, 8, nextchar >= '0' && nextchar <= '7' ? 3 : 1);
}

std::string escape(std::string_view text, std::string_view quotes) {
  const auto units = toutf16(text);
  std::string escaped;
  for (std::size_t i = 0; i < units.size(); ++i)
    escaped += escapeunit(units[i], i + 1 < units.size() ? units[i + 1] : u'\0', quotes);
  return escaped;
}

// Bytes as Wine writes them, a new line beginning behind column 76.
std::string writebytes(std::string_view bytes, std::size_t column, std::string_view newline) {
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

std::string writevalue(std::string_view name, const RegistryValue& value,
                       std::string_view newline) {
  std::string line = name.empty() ? "@=" : "\"" + escape(name, "\"") + "\"=";
  using Type = RegistryValue::Type;
  if (value.type == Type::number)
    line += "dword:" + digits(value.number, 16, 8);
  if (value.type == Type::binary)
    line += "hex:" + writebytes(value.bytes, line.size() + 4, newline);
  if (value.type == Type::expandtext)
    line += "str(2):";
  if (value.type == Type::text || value.type == Type::expandtext)
    line += "\"" + escape(value.text, "\"") + "\"";
  return line.append(newline);
}

std::string_view newlineof(std::string_view text) {
  const auto end = text.find('\n');
  return end != npos && end > 0 && text[end - 1] == '\r' ? "\r\n" : "\n";
}

// `at`, a line's beginning, moved back over blank lines.
std::size_t skipblanklines(std::string_view text, std::size_t at) {
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

std::optional<RegistryValue> findvalue(std::string_view registry, std::string_view key,
                                       std::string_view name) {
  std::optional<RegistryValue> last;
  eachentry(registry, key, name, [&](const Entry& entry) {
    if (auto value = readvalue(entry.data))
      last = std::move(value);
  });
  return last;
}

void addkeysbeside(std::string_view registry, std::string_view key, std::string& part) {
  eachsection(registry, key.substr(0, key.rfind('\\') + 1), Depth::beside,
              [&](const Section& section) {
                part += registry.substr(section.begin, section.end - section.begin);
              });
}

std::size_t lastkey(std::string_view registry, std::size_t from) {
  for (std::size_t at = registry.size(); at-- > std::max<std::size_t>(from, 1);)
    if (registry[at] == '[' && registry[at - 1] == '\n')
      return at;
  return 0;
}

std::string withvalue(std::string_view registry, std::string_view key, std::string_view name,
                      const RegistryValue& value) {
  if (value.type == RegistryValue::Type::other)
    return std::string(registry);
  const auto newline = newlineof(registry);
  const auto line = writevalue(name, value, newline);
  std::optional<Entry> entry;
  eachentry(registry, key, name, [&](const Entry& found) { entry = found; });
  if (entry)
    return replaced(registry, entry->begin, entry->end, line, newline);
  std::optional<std::size_t> keyend;
  eachsection(registry, key, Depth::key,
              [&](const Section& section) { keyend = skipblanklines(registry, section.end); });
  if (keyend)
    return replaced(registry, *keyend, *keyend, line, newline);
  if (registry.empty())
    registry = "WINE REGISTRY Version 2\n";
  const std::string end(newline);
  const auto section = end + "[" + escape(key, "[]") + "]" + end + line;
  return replaced(registry, registry.size(), registry.size(), section, newline);
}

std::string withoutvalue(std::string_view registry, std::string_view key, std::string_view name) {
  std::string result;
  std::size_t kept = 0;
  eachentry(registry, key, name, [&](const Entry& entry) {
    result += registry.substr(kept, entry.begin - kept);
    kept = entry.end;
  });
  return result.append(registry.substr(kept));
}

std::string withoutkey(std::string_view registry, std::string_view key) {
  std::string result;
  std::size_t kept = 0;
  eachsection(registry, key, Depth::subtree, [&](const Section& section) {
    const auto begin = std::max(kept, skipblanklines(registry, section.begin));
    result += registry.substr(kept, begin - kept);
    kept = std::max(kept, skipblanklines(registry, section.end));
  });
  return result.append(registry.substr(kept));
}
