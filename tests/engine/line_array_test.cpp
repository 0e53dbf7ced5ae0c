// How a text falls into lines.
#include "engine/line_array.h"

#include <gtest/gtest.h>

using Lines = std::vector<std::string>;

TEST(LineArray, SplitsAtCrLfAlone) {
  const struct {
    const char* text;
    Lines lines;
  } cases[] = {
      {"a\r\nb\r\n\r\n", {"a", "b"}},
      {"a\r\n\r\nb", {"a", "", "b"}},
      {"a\nb", {"a\nb"}},
      {"a\r\n\r", {"a", "\r"}},
      {"a\r\r\nb", {"a\r", "b"}},
      {"\r\na", {"", "a"}},
      {"a\n\r\n", {"a\n"}},
      {"", {}},
      {"\r\n\r\n", {}},
      {"\n", {"\n"}},
  };
  for (const auto& c : cases) {
    const LineArray array = LineArray::split(c.text);
    Lines lines;
    for (std::size_t i = 0; i < array.size(); ++i)
      lines.emplace_back(array[i]);
    EXPECT_EQ(lines, c.lines) << c.text;
    EXPECT_EQ(array.text(), c.text);
  }
}

TEST(LineArray, StaysValidWhenMovedAndIsEmptyBeyondItsEnd) {
  LineArray array = LineArray::split("a\r\nb");
  const LineArray moved = std::move(array);
  EXPECT_EQ(moved[0], "a");
  EXPECT_EQ(moved[1], "b");
  EXPECT_EQ(moved[2], "");
  EXPECT_EQ(LineArray::empty(11).size(), 11u);
  EXPECT_EQ(LineArray::empty(11)[10], "");
}
