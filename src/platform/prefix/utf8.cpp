// The characters of UTF-8 text, one at a time.
#include "platform/prefix/utf8.h"

namespace {

// The lowest character that needs so many bytes; what is encoded longer than it needs is no UTF-8.
constexpr char32_t lowest[] = {0, 0, 0x80, 0x800, 0x10000};
constexpr char32_t highest = 0x10FFFF;

std::size_t sequence_length(unsigned char first) {
  if (first < 0x80)
    return 1;
  if (first < 0xC0)
    return 0;
  return first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF8 ? 4 : 0;
}

}  // namespace

std::size_t decode_utf8(std::string_view text, char32_t& character) {
  const auto first = static_cast<unsigned char>(text.front());
  const std::size_t length = sequence_length(first);
  if (length == 0 || text.size() < length)
    return 0;
  character = length == 1 ? first : first & (0x7Fu >> length);
  for (const char c : text.substr(1, length - 1)) {
    const auto next = static_cast<unsigned char>(c);
    if ((next & 0xC0) != 0x80)
      return 0;
    character = character << 6 | (next & 0x3Fu);
  }
  return character >= lowest[length] && character <= highest ? length : 0;
}

void append_utf8(std::string& text, char32_t character) {
  if (character < 0x80) {
    text += static_cast<char>(character);
    return;
  }
  const int more = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
  const unsigned lead = more == 1 ? 0xC0 : more == 2 ? 0xE0 : 0xF0;
  text += static_cast<char>(lead | character >> (6 * more));
  for (int i = more - 1; i >= 0; --i)
    text += static_cast<char>(0x80 | (character >> (6 * i) & 0x3F));
}
