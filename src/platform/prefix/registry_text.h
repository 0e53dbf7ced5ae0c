// The registry in the text form in which Wine keeps system.reg and user.reg: finds a value, and
// makes a new text with one change, which Wine reads, and in which every other line is the same
// byte for byte.
//
// `registry` is always such a text, possibly malformed. `key` is a path below the text's root with
// single backslashes (Software\Wine); the empty path is the root itself. `name` is a value's name;
// the empty name is the key's default value. Both are UTF-8; their ASCII letters are
// case-insensitive. Time and memory are linear in the size of the text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

struct RegistryValue {
  // Expandable: %NAME% in the text stands for a variable.
  enum class Type { text, expandable_text, number };

  Type type = Type::text;
  // UTF-8, up to its first NUL; a number is in decimal. Where a surrogate lacks its partner, the
  // escapes or bytes in a row with it become U+FFFD.
  std::string text{};
};

// The value, or nullopt if there is none. A line with malformed data or data of another type counts
// as missing. If a key or a value occurs several times, the last value wins.
std::optional<RegistryValue> find_value(std::string_view registry, std::string_view key,
                                        std::string_view name);

// The text with the value set, at the start of its key, else in a new key at the end of the text.
// An empty text gets the first line that Wine requires. A new key has no time of change; Wine sets
// it to the time when it reads the file. `type` is REG_SZ, REG_EXPAND_SZ, REG_DWORD or REG_BINARY,
// case-insensitive; the empty text means REG_SZ. The data of the last two is a decimal number of 32
// bits, signed or not; REG_BINARY stores it as four bytes, little-endian. Nullopt for any other
// type or data.
std::optional<std::string> with_value(std::string_view registry, std::string_view key,
                                      std::string_view name, const std::string& data,
                                      const std::string& type);

// The text without any definition of the value or, for the empty name, without the key and all keys
// below it. Nullopt if there are none.
std::optional<std::string> without(std::string_view registry, std::string_view key,
                                   std::string_view name);
