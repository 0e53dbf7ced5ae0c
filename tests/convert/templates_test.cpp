// How templates are read.
#include "convert/templates.h"

#include "tests/support/maketemplates.h"
#include "tests/support/testmachine.h"

#include <gtest/gtest.h>

using Heads = std::vector<std::size_t>;

TEST(Templates, HeadersAndTheirCounts) {
  const OldTemplate file = oldof("head\na$3\n$5\nb\nc$x\nd$2$7\ne$ 1 2 lines\nf$2.9\ng$-1");
  EXPECT_EQ(file.heads, (Heads{1, 4, 5, 6, 7, 8}));
  EXPECT_EQ(file.counts, (std::vector<long long>{3, 0, 2, 12, 2, -1}));
  const OldTemplate none = oldof("3 lines\nb");
  EXPECT_EQ(none.heads, Heads{0});
  EXPECT_EQ(none.counts, std::vector<long long>{3});
  std::string lines(40000, '\n');
  EXPECT_EQ(oldof(lines + "late$1").heads, Heads{40000});
}

TEST(Templates, MarkersAreToldApart) {
  const struct {
    const char* line;
    const char* text;
    Marker marker;
  } cases[] = {
      {"size #", "size ", Marker::lastcharacter},
      {"id ##", "id ", Marker::lasttwo},
      {"name &", "name ", Marker::rest},
      {"flag 1", "flag 1", Marker::none},
      {"count5#", "count5#", Marker::dropped},
      {"a&", "a&", Marker::dropped},
      {" #", " ", Marker::lastcharacter},
      {"##", "", Marker::lasttwo},
      {"#", "#", Marker::dropped},
      {"&", "&", Marker::dropped},
      {"a # b", "a # b", Marker::none},
      {"a###", "a#", Marker::lasttwo},
      {"a &#", "a &#", Marker::dropped},
  };
  for (const auto& c : cases) {
    const NewTemplate file = newof(c.line);
    EXPECT_EQ(file.output[0].text, c.text);
    EXPECT_EQ(file.output[0].marker, c.marker) << c.line;
  }
}

TEST(Templates, VersionsAtTheEndOfALine) {
  const struct {
    const char* line;
    const char* version;
  } cases[] = {{"version 3", "3"}, {"version 12", "12"}, {"", ""}, {"7", "7"},
               {"x4", "x4"},       {"version3 ", "3 "},  {" ", ""}};
  for (const auto& c : cases)
    EXPECT_EQ(versionof(c.line), c.version) << c.line;
}

TEST(Templates, TheBaselineGivesTheCurrentVersion) {
  const struct {
    const char* text;
    double version;
  } cases[] = {{"a\r\nv 4", 4}, {"a\r\nv 12\r\nb", 12}, {"a\r\nx4", 0}, {"v 4", 0}, {"", 0}};
  TestMachine machine;
  Program program(machine);
  Templates templates(program.files, "v");
  const auto missing = templates.initnew();
  ASSERT_FALSE(bool(missing));
  EXPECT_EQ(missing.failure().path, "vnewstruct0.txt");
  for (const auto& c : cases) {
    writefile(machine.data / "vnewstruct0.txt", c.text);
    EXPECT_EQ(*templates.initnew(), c.version) << c.text;
  }
}

TEST(Templates, FilesAreNamedByEditionAndVersionAndReadAnew) {
  TestMachine machine;
  Program program(machine);
  writefile(machine.data / "toldstruct12.txt", "a$1");
  writefile(machine.data / "tnewstruct12.txt", "b$2");
  writefile(machine.data / "toldstructfix4.txt", "c$3");
  writefile(machine.data / "tnewstructfix4.txt", "d$4");
  Templates templates(program.files, "t");
  templates.loadold("12");
  templates.loadnew("12");
  EXPECT_EQ(templates.oldtemplate().lines[0], "a$1");
  EXPECT_EQ(templates.newtemplate().lines[0], "b$2");
  templates.loadoldfix(4);
  templates.loadnewfix(4);
  EXPECT_EQ(templates.oldtemplate().lines[0], "c$3");
  EXPECT_EQ(templates.newtemplate().lines[0], "d$4");

  writefile(machine.data / "toldstruct12.txt", "e$5");
  templates.loadold("12");
  EXPECT_EQ(templates.oldtemplate().counts[0], 5);
  std::filesystem::remove(machine.data / "toldstruct12.txt");
  templates.loadold("12");
  EXPECT_EQ(templates.oldtemplate().lines.size(), 11u);
  EXPECT_TRUE(templates.oldtemplate().failure);
  templates.loadold("");
  EXPECT_EQ(templates.oldtemplate().filename, "toldstruct.txt");
}
