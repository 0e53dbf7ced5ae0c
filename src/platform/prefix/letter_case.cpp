// Letter case on Linux: names in a Wine prefix are case-insensitive, as on Windows.
#include "platform/letter_case.h"

#include "platform/path_rules.h"

#include <algorithm>
#include <cstddef>
#include <cwctype>
#include <iterator>

#include <locale.h>
#include <utf8.h>

namespace {

// Follows Unicode, whatever the user's locale is.
char32_t lower_letter(char32_t letter) {
  static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  if (!unicode)
    return letter;
  return static_cast<char32_t>(towlower_l(static_cast<wint_t>(letter), unicode));
}

}  // namespace

std::string lowercase(std::string_view text) {
  std::string result(text);
  if (std::ranges::all_of(text, is_ascii)) {  // as most names are
    std::ranges::transform(text, result.begin(), ascii_lower);
    return result;
  }
  result.clear();
  while (true) {
    const auto invalid = utf8::find_invalid(text.begin(), text.end());
    for (auto at = text.begin(); at != invalid;)
      utf8::append(lower_letter(utf8::unchecked::next(at)), std::back_inserter(result));
    if (invalid == text.end())
      return result;
    result += *invalid;
    text.remove_prefix(static_cast<std::size_t>(invalid - text.begin()) + 1);
  }
}
