// The lines of a text file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// The lines of a text, numbered from 0, without their line ends. What it gives are views into the
// text, which the array keeps; moving the array leaves them valid.
class LineArray {
public:
  static constexpr std::string_view line_end = "\r\n";

  LineArray() = default;

  // Splits a text at every CR LF. The CR LF pairs at its end are dropped before, so that a text of
  // nothing else has no lines. A lone CR or LF is a character like any other. The text must be
  // shorter than 4 GiB; no file of more than 1 GiB is read, and no result is longer.
  static LineArray split(std::string text);

  // That many empty lines.
  static LineArray empty(std::size_t count);

  std::size_t size() const { return begins.empty() ? 0 : begins.size() - 1; }

  // Line `index`; the empty text beyond the last line.
  std::string_view operator[](std::size_t index) const {
    return content && index < size() ? piece(index, index + 1) : std::string_view();
  }

  // Lines `from` up to but without `to`, one at least, of a text that was split: as they stand in
  // it, with the line ends between them.
  std::string_view piece(std::size_t from, std::size_t to) const {
    return text().substr(begins[from], begins[to] - line_end.size() - begins[from]);
  }

  // The text that was split.
  std::string_view text() const { return content ? std::string_view(*content) : ""; }

private:
  void end_line(std::size_t end) {
    begins.push_back(static_cast<std::uint32_t>(end + line_end.size()));
  }

  std::unique_ptr<const std::string> content;  // at a place that moving the array does not change
  std::vector<std::uint32_t> begins;           // where each line begins, and where one more would
};
