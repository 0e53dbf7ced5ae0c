// Which template line and section a map line belongs to.
#include "convert/matching.h"

#include "tests/support/maketemplates.h"

#include <gtest/gtest.h>

#include <random>

TEST(Matching, TheLastTemplateLineWins) {
  const struct {
    const char* old;
    const char* line;
    std::size_t match;
  } cases[] = {
      {"header\nplanet\nplanetName", "planetName 7", 2},
      {"header\nplanetName\nplanet", "planetName 7", 2},
      {"header\nplanet", "Planet 7", 0},
      {"header\nplanet", "plane", 0},
      {"header\nplanet", "header 1", 0},
      {"a\nb\nc\nd\ne\n\nf", "anything", 5},
      {"a\nb\n\nbc", "bcd", 3},
      {"a\nb\n\nbc", "", 2},
      {"a\nb\nb\na", "a", 3},
      {"a\nx$3", "x$3", 1},
  };
  for (const auto& c : cases)
    EXPECT_EQ(matchline(oldof(c.old), c.line), c.match) << c.old << " / " << c.line;
}

TEST(Matching, SectionsBeginAfterTheirHeader) {
  const OldTemplate file = oldof("0\n1\n2\nx$1\n4\n5\n6\n7\n8\n9\ny$1\n11\n12");
  const std::pair<std::size_t, std::size_t> cases[] = {{2, 0}, {3, 0}, {4, 0}, {10, 0}, {11, 1}};
  for (const auto& [t, section] : cases)
    EXPECT_EQ(sectionof(file, t), section) << t;
  EXPECT_EQ(sectionof(oldof("a\nb"), 1), 0u);
}

// The index must give what trying every template line gives.
TEST(Matching, AgreesWithThePlainDefinition) {
  std::mt19937 random(7);
  const auto text = [&](std::size_t longest, int letters) {
    std::string result(random() % (longest + 1), ' ');
    for (char& c : result)
      c = static_cast<char>("ab\tc\xFF"[random() % static_cast<unsigned>(letters)]);
    return result;
  };
  for (int round = 0; round < 2000; ++round) {
    const int letters = 1 + static_cast<int>(random() % 5);
    std::vector<std::string> lines(random() % 30);
    for (std::string& line : lines)
      line = text(6, letters);
    const PrefixIndex index(std::vector<std::string_view>(lines.begin(), lines.end()));
    for (int i = 0; i < 30; ++i) {
      const std::string line = text(9, letters);
      std::size_t expected = 0;
      for (std::size_t j = 0; j < lines.size(); ++j)
        if (line.starts_with(lines[j]))
          expected = j;
      ASSERT_EQ(index.find(line), expected) << line;
    }
  }
}
