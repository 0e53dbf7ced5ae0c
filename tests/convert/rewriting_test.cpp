// How a section is written, and what keeps it from being written.
#include "convert/rewriting.h"

#include "tests/support/maketemplates.h"

#include <gtest/gtest.h>

TEST(Rewriting, CarriesValuesOverByTheMarkers) {
  const OldTemplate old = oldof("MAP\nx$3\nnam");
  const LineArray map = linesof("0\n1\n2\nnam Foo\nsize 3\nid 42\nlast");
  const struct {
    const char* output;
    const char* written;
  } cases[] = {
      {"name &\nsize #\nid ##\nflag 1\ncount5#", "name Foo\r\nsize 3\r\nid 42\r\nflag 1\r\n"},
      {"nam &\na\nb\nc\nd", "nam  Foo\r\na\r\nb\r\nc\r\nd\r\n"},
      {"a very long text &\n #\n##\n#\n&", "a very long text \r\n 3\r\n42\r\n"},
      {"a\nb\nc &\nd\n\n", "a\r\nb\r\nc am Foo\r\nd\r\n\r\n"},
      {"a\nb\nc\nd #\ne #", "a\r\nb\r\nc\r\nd t\r\ne \r\n"},
  };
  for (const auto& c : cases) {
    std::string out = "before\r\n";
    const auto count =
        rewritesection(old, newof("MAP\nx$5\n" + std::string(c.output) + "\nrest"), 0, map, 3, out);
    ASSERT_TRUE(bool(count));
    EXPECT_EQ(*count, 3);
    EXPECT_EQ(out, "before\r\n" + std::string(c.written));
  }
}

TEST(Rewriting, NamesWhatIsWrongWithATemplate) {
  const LineArray map = linesof("a\nb");
  const struct {
    const char* old;
    const char* current;
    std::size_t section;
    const char* what;
    const char* header;
  } cases[] = {
      {"x$1\na", "x$\na", 0, "its section count is 0 or below", "x$"},
      {"x$1\na", "x$0.9\na", 0, "its section count is 0 or below", "x$0.9"},
      {"x$1\na", "x$-1\na", 0, "its section count is 0 or below", "x$-1"},
      {"x$1\na", "", 0, "its section count is 0 or below", ""},
      {"x$1\na\ny$1\nb", "x$1\na", 1, "it has no such section", "y$1"},
      {"x$1\na", "x$2\na", 0, "its count runs past its end", "x$2"},
      {"x$1\na", "x$99999999999999999999\na", 0, "its count runs past its end",
       "x$99999999999999999999"},
  };
  for (const auto& c : cases) {
    std::string out;
    const auto count = rewritesection(oldof(c.old), newof(c.current), c.section, map, 0, out);
    ASSERT_FALSE(bool(count)) << c.what;
    EXPECT_EQ(count.failure().filename, "new.txt");
    EXPECT_EQ(count.failure().what, c.what);
    EXPECT_EQ(count.failure().header, c.header);
    EXPECT_EQ(out, "");
  }
}

TEST(Rewriting, AMissingTemplateIsNamed) {
  const Failure missing{"old.txt", "read it", "the file is missing", true};
  std::string out;
  const auto noold =
      rewritesection(indexold("old.txt", missing), newof("x$1\na"), 0, linesof("a"), 0, out);
  EXPECT_EQ(noold.failure().filename, "old.txt");
  EXPECT_EQ(noold.failure().what, "the file is missing");
  const auto nonew =
      rewritesection(oldof("x$1\na"), indexnew("new.txt", missing), 0, linesof("a"), 0, out);
  EXPECT_EQ(nonew.failure().filename, "new.txt");
}
