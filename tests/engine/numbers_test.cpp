// Numbers in texts.
#include "engine/numbers.h"

#include <gtest/gtest.h>

#include <limits>

TEST(Numbers, NumericValues) {
  const std::pair<const char*, double> cases[] = {
      {"", 0},      {"4", 4},     {" 4", 4},  {"12 lines", 12}, {"x4", 0},     {"1 2\t3", 123},
      {"-7", -7},   {"- 7", -7},  {"+7", 7},  {"--7", 0},       {"1-2", 1},    {"1.5.9", 1.5},
      {".5", 0.5},  {"5.", 5},    {".", 0},   {"-", 0},         {"1e5", 1},    {"&H10", 0},
      {"0012", 12}, {"12$7", 12}, {"+-7", 0}, {"\r4", 0},       {"\xE9 4", 0},
  };
  for (const auto& [text, value] : cases)
    EXPECT_EQ(numeric_value(text), value) << '"' << text << '"';
  EXPECT_GT(numeric_value(std::string(5000, '9')), 1e300);
  EXPECT_EQ(numeric_value("0." + std::string(5000, '0') + "1"), 0);
}

TEST(Numbers, WholePartsStopAtTheLimitsAndTextsAreTheShortest) {
  EXPECT_EQ(whole_part(2.9), 2);
  EXPECT_EQ(whole_part(-2.9), -2);
  EXPECT_EQ(whole_part(1e300), std::numeric_limits<long long>::max());
  EXPECT_EQ(whole_part(-1e300), std::numeric_limits<long long>::min());
  EXPECT_EQ(number_text(12), "12");
  EXPECT_EQ(number_text(0.5), "0.5");
  EXPECT_EQ(number_text(std::numeric_limits<double>::max()).size(), 309u);
}
