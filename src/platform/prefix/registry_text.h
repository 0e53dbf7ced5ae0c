// The registry in the text form in which Wine keeps system.reg and user.reg: finds a value, and
// makes a new text with one change, which Wine reads, and in which every other line is the same
// byte for byte.
//
// `registry` is always such a text, possibly malformed, with LF or CR LF line ends. `key` is a path
// below the text's root with single backslashes (Software\Wine); the empty path is the root itself.
// `name` is a value's name; the empty name is the key's default value. Both are UTF-8 and
// case-insensitive. Time and memory are linear in the size of the text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

struct RegistryValue {
  enum class Type { text, expandable_text, number, binary, other };

  Type type = Type::text;
  std::string text{};        // for text and expandable_text: UTF-8, without the final NUL
  std::uint32_t number = 0;  // for number
  std::string bytes{};       // for binary; data of other types is not parsed
};

// The value, or nullopt if there is none. A line with malformed data counts as missing. If a key or
// a value occurs several times, the last value wins.
std::optional<RegistryValue> find_value(std::string_view registry, std::string_view key,
                                        std::string_view name);

// The text with the value set: on the line that defined it, else at the start of its key, else in a
// new key at the end of the text. An empty text gets the first line that Wine requires. A new key
// has no time of change; Wine sets it to the time when it reads the file. `value` is of any type
// but `other`.
std::string with_value(std::string_view registry, std::string_view key, std::string_view name,
                       const RegistryValue& value);

// The text without any definition of the value; equal to `registry` if there is none.
std::string without_value(std::string_view registry, std::string_view key, std::string_view name);

// The text without the key and all keys below it; equal to `registry` if there are none.
std::string without_key(std::string_view registry, std::string_view key);
