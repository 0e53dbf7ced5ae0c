// Text in a code page of Windows.
#include "platform/prefix/code_page.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <memory>

#include <iconv.h>

std::string from_code_page(const std::string& page, std::string_view text) {
  const iconv_t named = iconv_open("UTF-8", (page == "65001" ? "UTF-8" : "CP" + page).c_str());
  const bool known = reinterpret_cast<std::intptr_t>(named) != -1;
  const std::unique_ptr<void, int (*)(iconv_t)> conversion(
      known ? named : iconv_open("UTF-8", "CP1252"), iconv_close);
  constexpr std::size_t failed = static_cast<std::size_t>(-1);
  std::string bytes(text);
  std::string result;
  char* next = bytes.data();
  std::size_t left = bytes.size();
  while (left > 0) {
    std::array<char, 256> piece;
    char* end = piece.data();
    std::size_t room = piece.size();
    const bool stuck =
        iconv(conversion.get(), &next, &left, &end, &room) == failed && errno != E2BIG;
    result.append(piece.data(), end);
    if (!stuck)
      continue;
    result += "\uFFFD";
    ++next;
    --left;
  }
  return result;
}
