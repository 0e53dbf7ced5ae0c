// How the lines of a map become its text in the new format. See also docs/templates_test.cpp, and
// program.sh for random templates.
#include "engine/passes.h"

#include <gtest/gtest.h>

TEST(Passes, TheFaultOfATemplateIsNamed) {
  const struct {
    const char *old, *current;  // null when it is missing
    const char* fault;
  } cases[] = {
      {"x$1\r\na", "x$\r\na", "new: its section count is 0 or below: x$"},
      {"x$1\r\na", "x$0.9\r\na", "new: its section count is 0 or below: x$0.9"},
      {"x$1\r\na", "", "new: its section count is 0 or below"},
      {"x$1\r\na\r\ny$1\r\nb", "x$1\r\na", "new: it has no such section: y$1"},
      {"x$1\r\na", "x$2\r\na", "new: its count runs past its end: x$2"},
      {nullptr, "x$1\r\na", "old: the file is missing"},
      {"x$1\r\na", nullptr, "new: the file is missing"},
  };
  const Failure missing{"", "read it", "the file is missing", true};
  const auto text = [&](const char* t) { return t ? Result<std::string>(t) : missing; };
  for (const auto& c : cases) {
    const auto result = first_pass(index_old("old", text(c.old)), index_new("new", text(c.current)),
                                   LineArray::split("b\r\na\r\n"));
    ASSERT_FALSE(bool(result)) << c.fault;
    EXPECT_EQ(result.failure().path + ": " + result.failure().reason, c.fault);
  }
}
