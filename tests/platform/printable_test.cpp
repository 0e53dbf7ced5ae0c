// What reaches a terminal of a text from outside.
#include "platform/printable.h"

#include <gtest/gtest.h>

TEST(Printable, EscapesWhatDisturbsATerminalOrDisguisesAName) {
  const std::pair<const char*, const char*> cases[] = {
      {"Gro\xC3\x9F\x65 \xE9\x8A\x80 \xF0\x9F\x9A\x80",
       "Gro\xC3\x9F\x65 \xE9\x8A\x80 \xF0\x9F\x9A\x80"},
      {"\x1B[2J\t\x7F", "\\x1B[2J\\t\\x7F"},
      {"\xC2\x9B[2J", "\\xC2\\x9B[2J"},
      {"\xE2\x80\xAEyxalag.\xE2\x81\xA9", "\\xE2\\x80\\xAEyxalag.\\xE2\\x81\\xA9"},
      {"\xC2\xA0\xE2\x80\x93", "\xC2\xA0\xE2\x80\x93"},
  };
  for (const auto& [text, shown] : cases)
    EXPECT_EQ(printable(text), shown);
  EXPECT_EQ(printable_lines("\ta\r\n\x1B[2J\rb\n"), "\ta\r\n\\x1B[2J\\x0Db\n");
}
