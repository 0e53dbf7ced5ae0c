// Finds, sets and deletes a value in the text of a registry file. The input is a key, a value's
// name and the text, separated by NUL bytes. A value that was set must be found again.
#include "platform/prefix/registry_text.h"

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
  static_cast<void>(find_value(text, key, name));
  static_cast<void>(without(text, key, name));
  const auto edited = with_value(text, key, name, "7", "REG_DWORD").value();
  const auto found = find_value(edited, key, name);
  if (!found || found->text != "7")
    std::abort();
  return 0;
}
