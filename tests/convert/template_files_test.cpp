// How templates are read.
#include "convert/template_files.h"

#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

TEST(TemplateFiles, TheBaselineGivesTheCurrentVersion) {
  const struct {
    const char* text;
    double version;
  } cases[] = {{"a\r\nv 4", 4}, {"a\r\nv 12\r\nb", 12}, {"a\r\nx4", 0}, {"v 4", 0}, {"", 0}};
  TestMachine machine;
  Program program(machine);
  TemplateFiles templates(program.files, "v");
  const auto missing = templates.initnew();
  ASSERT_FALSE(bool(missing));
  EXPECT_EQ(missing.failure().path, "vnewstruct0.txt");
  for (const auto& c : cases) {
    write_file(machine.data / "vnewstruct0.txt", c.text);
    EXPECT_EQ(*templates.initnew(), c.version) << c.text;
  }
}

TEST(TemplateFiles, AreReadAnewOnceTheirFilesChange) {
  TestMachine machine;
  Program program(machine);
  TemplateFiles templates(program.files, "t");
  for (const long long count : {1, 5}) {
    write_file(machine.data / "toldstruct12.txt", "a$" + std::to_string(count));
    templates.loadold("12");
    EXPECT_EQ(templates.oldtemplate().counts[0], count);
  }
  std::filesystem::remove(machine.data / "toldstruct12.txt");
  templates.loadold("12");
  EXPECT_EQ(templates.oldtemplate().lines.size(), 11u);
  EXPECT_TRUE(templates.oldtemplate().failure);
}
