// How the lines of a map become its text in the new format.
#include "engine/passes.h"

#include "tests/support/make_templates.h"

#include <gtest/gtest.h>

TEST(Passes, TheFaultOfATemplateIsNamed) {
  const struct {
    const char *old, *current, *reason;
  } cases[] = {
      {"x$1\na", "x$\na", "its section count is 0 or below: x$"},
      {"x$1\na", "x$0.9\na", "its section count is 0 or below: x$0.9"},
      {"x$1\na", "", "its section count is 0 or below"},
      {"x$1\na\ny$1\nb", "x$1\na", "it has no such section: y$1"},
      {"x$1\na", "x$2\na", "its count runs past its end: x$2"},
  };
  const LineArray map = lines_of("b\na");
  for (const auto& c : cases) {
    const auto result = first_pass(old_of(c.old), new_of(c.current), map);
    ASSERT_FALSE(bool(result)) << c.reason;
    EXPECT_EQ(result.failure().path, "new.txt");
    EXPECT_EQ(result.failure().reason, c.reason);
  }
  const Failure missing{"", "read it", "the file is missing", true};
  const auto no_old = first_pass(index_old("old.txt", missing), new_of("x$1\na"), map);
  EXPECT_EQ(no_old.failure().path, "old.txt");
  const auto no_new = first_pass(old_of("x$1\na"), index_new("new.txt", missing), map);
  EXPECT_EQ(no_new.failure().path, "new.txt");
}
