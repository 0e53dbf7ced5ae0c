// Letter case on Linux: names in a prefix are compared as Windows compares them, ignoring case.
#include "platform/prefix/letter_case.h"

#include "platform/prefix/utf8.h"

#include <algorithm>
#include <cwctype>

#include <locale.h>

namespace {

bool is_ascii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

char ascii_lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// Letter case by Unicode, whatever the user's locale is.
char32_t lower_letter(char32_t letter) {
  static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  if (!unicode)
    return letter;
  return static_cast<char32_t>(towlower_l(static_cast<wint_t>(letter), unicode));
}

}  // namespace

std::string lowercase(std::string_view text) {
  std::string result(text);
  if (is_ascii(text)) {
    std::transform(result.begin(), result.end(), result.begin(), ascii_lower);
    return result;
  }
  result.clear();
  while (!text.empty()) {
    char32_t letter = 0;
    const std::size_t length = decode_utf8(text, letter);
    if (length == 0)
      result += text.front();
    else
      append_utf8(result, lower_letter(letter));
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return result;
}
