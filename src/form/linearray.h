// The lines of a text file.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// The lines of a text, numbered from 0, without their line ends. The lines are views into the text,
// which the array keeps; moving the array leaves them valid.
class LineArray {
public:
  LineArray() = default;

  // Splits a text at every CR LF. The CR LF pairs at its end are dropped before, so that a text of
  // nothing else has no lines. A lone CR or LF is a character like any other.
  static LineArray split(std::string text);

  // That many empty lines.
  static LineArray empty(std::size_t count);

  std::size_t size() const { return lines.size(); }

  // Line `index`; the empty text beyond the last line.
  std::string_view operator[](std::size_t index) const {
    return index < lines.size() ? lines[index] : std::string_view();
  }

  // Lines `from` up to but without `to`, one at least, of a text that was split: as they stand in
  // it, with the line ends between them.
  std::string_view piece(std::size_t from, std::size_t to) const;

  auto begin() const { return lines.begin(); }
  auto end() const { return lines.end(); }

  // The text that was split.
  std::string_view text() const { return content ? std::string_view(*content) : ""; }

private:
  std::unique_ptr<const std::string> content;
  std::vector<std::string_view> lines;
};
