// Finding, setting and deleting in the text of a registry file. The input is a key, a value's name
// and the text, separated by bytes 0. What was set must be found again, and the part of the text
// that a key and its neighbours have must hold the same values, even if the text is cut in two.
#include "platform/prefix/registrytext.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace {

std::string cut(std::string_view& rest) {
  const auto length = std::min(rest.find('\0'), rest.size());
  const std::string piece(rest.substr(0, length));
  rest.remove_prefix(std::min(length + 1, rest.size()));
  return piece;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view rest(reinterpret_cast<const char*>(data), size);
  const std::string key = cut(rest);
  const std::string name = cut(rest);
  const std::string text(rest);
  const auto whole = findvalue(text, key, name);
  std::string keys, joined;
  addkeysbeside(text, key, keys);
  const auto middle = lastkey(text, text.size() / 2);
  addkeysbeside(rest.substr(0, middle), key, joined);
  addkeysbeside(rest.substr(middle), key, joined);
  const auto part = findvalue(keys, key, name);
  if (bool(whole) != bool(part) || (whole && whole->text != part->text) || joined != keys)
    std::abort();
  static_cast<void>(withoutkey(text, key));
  static_cast<void>(withoutvalue(text, key, name));
  const RegistryValue value{.type = RegistryValue::Type::number, .number = 7};
  static_cast<void>(withvalue(text, key, name, value));
  const auto found = findvalue(withvalue(text, "Game\\Maps", "Path", value), "Game\\Maps", "Path");
  if (!found || found->number != 7)
    std::abort();
  return 0;
}
