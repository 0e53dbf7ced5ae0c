// The registry as the text that Wine keeps in system.reg and user.reg: finding one value in it, and
// making a new text with one change, every other line staying byte for byte as it was.
//
// In all of these `registry` is such a text, whole or damaged, with LF or CR LF line ends. `key` is
// a path below the text's root with single backslashes (Software\Wine), the empty path the root
// itself; `name` is a value's name, the empty name the key's default value. Both are UTF-8 and are
// compared ignoring letter case. Time and memory are linear in the size of the text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

struct RegistryValue {
  enum class Type { text, expandable_text, number, binary, other };

  Type type = Type::text;
  std::string text{};        // of text and expandable_text: UTF-8, without the NUL that ends it
  std::uint32_t number = 0;  // of number
  std::string bytes{};       // of binary; the data of other types is not read
};

// The value, or nothing where the text has none. A line whose data is malformed counts as missing.
// Where a key or a value stands several times, the last value wins.
std::optional<RegistryValue> find_value(std::string_view registry, std::string_view key,
                                        std::string_view name);

// Adds to `part` what the text has of the key and of those directly below the same key: shorter to
// look through for their values.
void append_sibling_keys(std::string_view registry, std::string_view key, std::string& part);

// Where the last key that begins at `from` or behind it does; 0 when none does. A text may be cut
// there: both parts together have what the whole has.
std::size_t find_last_key(std::string_view registry, std::size_t from);

// The text with the value set: in place of the line that gave it, else at the end of its key, else
// in a new key at the end of the text. An empty text gets the first line that Wine asks for. A new
// key carries no time of change; Wine gives it the time at which it reads the file. A value of type
// `other` cannot be written and leaves the text as it was.
std::string with_value(std::string_view registry, std::string_view key, std::string_view name,
                       const RegistryValue& value);

// The text without the value, wherever it stands; equal to `registry` where it has none.
std::string without_value(std::string_view registry, std::string_view key, std::string_view name);

// The text without the key and all keys below it; equal to `registry` where it has none of them.
std::string without_key(std::string_view registry, std::string_view key);
