// Text from outside, made fit for a terminal.
#include "platform/printable.h"

#include <algorithm>
#include <utility>

namespace {

// The C1 controls and the marks, embeddings and isolates of bidirectional text in UTF-8, each by
// the first and the last character of a range.
constexpr std::pair<std::string_view, std::string_view> disturbing[] = {
    {"\xC2\x80", "\xC2\x9F"},         {"\xD8\x9C", "\xD8\x9C"},
    {"\xE2\x80\x8E", "\xE2\x80\x8F"}, {"\xE2\x80\xA8", "\xE2\x80\xAE"},
    {"\xE2\x81\xA6", "\xE2\x81\xA9"},
};

// How many bytes at the start of a text must not reach a terminal.
std::size_t disturbing_length(std::string_view text) {
  const auto byte = static_cast<unsigned char>(text.front());
  if (byte < 0x20 || byte == 0x7F)
    return 1;
  for (const auto& [first, last] : disturbing)
    if (const auto start = text.substr(0, first.size()); first <= start && start <= last)
      return first.size();
  return 0;
}

std::string escaped(std::string_view piece) {
  if (piece == "\t")
    return "\\t";
  constexpr char digits[] = "0123456789ABCDEF";
  std::string shown;
  for (const char c : piece)
    shown += {'\\', 'x', digits[static_cast<unsigned char>(c) >> 4],
              digits[static_cast<unsigned char>(c) & 0xF]};
  return shown;
}

std::string made_printable(std::string_view text, bool keeps_lines) {
  std::string shown;
  while (!text.empty()) {
    const bool kept = text.starts_with('\t') || text.starts_with('\n') || text.starts_with("\r\n");
    const std::size_t length = keeps_lines && kept ? 0 : disturbing_length(text);
    shown += length > 0 ? escaped(text.substr(0, length)) : std::string(1, text.front());
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return shown;
}

}  // namespace

std::string printable(std::string_view text) { return made_printable(text, false); }
std::string printable_lines(std::string_view text) { return made_printable(text, true); }
