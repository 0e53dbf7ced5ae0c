// How a text falls into lines.
#include "engine/line_array.h"

#include <gtest/gtest.h>

TEST(LineArray, SplitsAtCrLfAlone) {
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"a\r\nb\r\n\r\n", {"a", "b"}},
      {"a\r\n\r\nb", {"a", "", "b"}},
      {"a\nb", {"a\nb"}},
      {"a\r\n\r", {"a", "\r"}},
      {"a\r\r\nb", {"a\r", "b"}},
      {"\r\na", {"", "a"}},
      {"a\n\r\n", {"a\n"}},
      {"", {}},
      {"\r\n\r\n", {}},
  };
  for (const auto& [text, lines] : cases) {
    LineArray array = LineArray::split(text);
    const LineArray moved = std::move(array);
    ASSERT_EQ(moved.size(), lines.size()) << text;
    for (std::size_t i = 0; i < moved.size(); ++i)
      EXPECT_EQ(moved[i], lines[i]);
    EXPECT_EQ(moved[moved.size()], "");  // beyond the end
    EXPECT_EQ(moved.text(), text);
  }
  EXPECT_EQ(LineArray::empty(11).size(), 11u);
  EXPECT_EQ(LineArray::empty(11)[10], "");
}
