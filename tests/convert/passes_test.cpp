// How the lines of a map become its text in the new format.
#include "convert/passes.h"

#include "tests/support/maketemplates.h"

#include <gtest/gtest.h>

namespace {

std::string withcrlf(const std::string& lines) {
  std::string text;
  for (const std::string_view line : linesof(lines))
    writeline(text, line);
  return text;
}

}  // namespace

TEST(Passes, TheFirstPassRewritesEveryRecognisedBlock) {
  const struct {
    const char* old;
    const char* current;
    const char* map;
    const char* result;
  } cases[] = {
      // Version, a section that grows, lines carried over.
      {"MAP\nver$1\nversion\npl$2\nnam\nsize",
       "MAP\nver$1\nversion 4\npl$3\nname &\nsize #\nextra 0",
       "MAP\nversion 3\nnam Foo\nsize 7\nend", "MAP\nversion 4\nname Foo\nsize 7\nextra 0\nend"},
      // A block that runs past the map's end.
      {"M\na$5\nx", "M\na$2\nx &\ny #", "M\n1\nx", "M\n1\nx \ny "},
      // Counts below 1: the line is carried over after its section.
      {"M\na$0\nx", "M\na$1\nnew", "M\nx 1\nx 2\nz", "M\nnew\nx 1\nnew\nx 2\nz"},
      {"M\na$-3\nx", "M\na$1\nnew", "M\nx 1\nz", "M\nnew\nx 1\nz"},
      // A count beyond all bounds takes the rest of the map.
      {"M\na$99999999999999999999\nx", "M\na$1\nnew", "M\nx\ny\nz", "M\nnew"},
      // An empty recognition line takes every line.
      {"M\na$1\n\nx", "M\na$1\nnew", "M\ny", "new\nnew"},
  };
  for (const auto& c : cases) {
    const auto result = firstpass(oldof(c.old), newof(c.current), linesof(c.map));
    ASSERT_TRUE(bool(result)) << c.map;
    EXPECT_EQ(*result, withcrlf(c.result));
  }
}

TEST(Passes, TheFixPassWantsThreeRecognisedLinesInARow) {
  const OldTemplate old = oldof("M\na$2\nx\ny\nz");
  const NewTemplate current = newof("M\na$1\nnew");
  const std::pair<const char*, const char*> cases[] = {
      {"x\ny\nz\nq\nr", "new\nz\nq\nr"},
      {"x\ny\nq\nr\ns", "x\ny\nq\nr\ns"},
      {"q\nx\ny\nz", "q\nnew\nz"},  // the block reaches into the last two lines
      {"x\ny\nz", "new\nz"},
      {"x\ny", "x\ny"},
      {"x", "x"},
      {"x\nx\nx\nx\nx\nx", "new\nnew\nx\nx"},
  };
  for (const auto& [map, result] : cases)
    EXPECT_EQ(*fixpass(old, current, linesof(map)), withcrlf(result)) << map;
  EXPECT_EQ(*fixpass(oldof("M\na$9\nx"), current, linesof("x\nx\nx\nx")), "new\r\n");
}

TEST(Passes, ATemplateErrorEndsAPass) {
  const auto error = firstpass(oldof("M\na$1\nx"), newof("M\na$0\nnew"), linesof("q\nx"));
  ASSERT_FALSE(bool(error));
  EXPECT_EQ(error.failure().header, "a$0");
  EXPECT_TRUE(bool(firstpass(oldof("M\na$1\nx"), newof("M\na$0\nnew"), linesof("q\nr"))));
}
