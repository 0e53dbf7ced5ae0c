// Lower case of UTF-8 text.
#include "platform/letter_case.h"

#include <gtest/gtest.h>

TEST(LetterCase, LowersUnicodeAndKeepsInvalidBytes) {
  const std::pair<const char*, const char*> cases[] = {
      {"", ""},
      {"AZ az 09_", "az az 09_"},
      {"\xC3\x89toile \xC3\x96L", "\xC3\xA9toile \xC3\xB6l"},  // É, Ö
      {"\xD0\x9C\xCE\xA9", "\xD0\xBC\xCF\x89"},                // М, Ω
      {"\xE1\xBA\x9E", "\xC3\x9F"},                            // capital sharp s
      {"\xF0\x90\x90\x80", "\xF0\x90\x90\xA8"},                // beyond 16 bits
      {"X\xFFY\xC3", "x\xFFy\xC3"},                            // stray bytes
      {"\xC1\x81\xE0\x80\x81", "\xC1\x81\xE0\x80\x81"},        // overlong
      {"\xC3Z\xF5\x80\x80\x80", "\xC3z\xF5\x80\x80\x80"},
  };
  for (const auto& [text, lowered] : cases)
    EXPECT_EQ(lowercase(text), lowered);
}
