// Text in a code page of Windows.
#include "platform/prefix/code_page.h"

#include <array>
#include <cerrno>
#include <cstdint>

#include <iconv.h>

namespace {

constexpr std::string_view replacement_character = "\xEF\xBF\xBD";  // U+FFFD

// A conversion to UTF-8 by the C library.
class Decoder {
public:
  explicit Decoder(const std::string& encoding)
      : conversion(iconv_open("UTF-8", encoding.c_str())) {}
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;
  ~Decoder() {
    if (is_open())
      iconv_close(conversion);
  }

  // Whether the C library knows the encoding.
  bool is_open() const { return reinterpret_cast<std::intptr_t>(conversion) != -1; }

  std::string decode(std::string bytes) const {
    constexpr std::size_t failed = static_cast<std::size_t>(-1);
    std::string result;
    char* next = bytes.data();
    std::size_t left = bytes.size();
    while (left > 0) {
      std::array<char, 256> piece;
      char* end = piece.data();
      std::size_t room = piece.size();
      const bool stuck = iconv(conversion, &next, &left, &end, &room) == failed && errno != E2BIG;
      result.append(piece.data(), end);
      if (!stuck)
        continue;
      result += replacement_character;
      ++next;
      --left;
    }
    return result;
  }

private:
  const iconv_t conversion;
};

}  // namespace

std::string from_code_page(const std::string& page, std::string_view text) {
  const Decoder named(page == "65001" ? "UTF-8" : "CP" + page);
  return named.is_open() ? named.decode(std::string(text))
                         : Decoder("CP1252").decode(std::string(text));
}
