// The lines of a text file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The lines of a text, numbered from 0, without their line ends. Lines are views into the text,
// which the array owns; moving the array leaves them valid.
class LineArray {
public:
  static constexpr std::string_view line_end = "\r\n";

  // The longest text in bytes that is split or written: 1 GiB. No map comes near it, and positions
  // in the text fit in 32 bits.
  static constexpr std::size_t max_text_size = std::size_t{1} << 30;

  LineArray() = default;

  // Splits a text at every CR LF. CR LF pairs at its end are dropped first, so a text of nothing
  // else has no lines. A lone CR or LF is an ordinary character.
  static LineArray split(std::string text);

  // That many empty lines.
  static LineArray empty(std::size_t count);

  std::size_t size() const { return begins.empty() ? 0 : begins.size() - 1; }

  // Line `index`; the empty text beyond the last line.
  std::string_view operator[](std::size_t index) const {
    return content && index < size() ? piece(index, index + 1) : std::string_view();
  }

  // Lines `from` up to but not including `to`, at least one, as they stand in a text that was
  // split: with the line ends between them.
  std::string_view piece(std::size_t from, std::size_t to) const {
    return text().substr(begins[from], begins[to] - line_end.size() - begins[from]);
  }

  // The text that was split.
  std::string_view text() const { return content ? std::string_view(*content) : ""; }

  // Gives the text away; the array is used no more.
  std::string release() && { return content ? std::move(*content) : ""; }

private:
  void add_line_ending_at(std::size_t end) {
    begins.push_back(static_cast<std::uint32_t>(end + line_end.size()));
  }

  std::unique_ptr<std::string> content;  // on the heap, so that moving keeps views valid
  std::vector<std::uint32_t> begins;     // where each line begins, and where one more would
};
