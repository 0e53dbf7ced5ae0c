// How templates are read.
#include "convert/template_files.h"

#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

TEST(TemplateFiles, TheBaselineGivesTheCurrentVersion) {
  TestMachine machine;
  Program program(machine);
  TemplateFiles templates(program.files, "v");
  EXPECT_EQ(templates.initnew().failure().path, "vnewstruct0.txt");
  const std::pair<const char*, double> cases[] = {
      {"a\r\nv 4", 4}, {"a\r\nv 12\r\nb", 12}, {"a\r\nv 0", 0}};
  for (const auto& [text, version] : cases) {
    write_file(machine.data / "vnewstruct0.txt", text);
    EXPECT_EQ(*templates.initnew(), version) << text;
  }
  for (const char* text : {"a\r\nx4", "a\r\n", "v 4", ""}) {
    write_file(machine.data / "vnewstruct0.txt", text);
    EXPECT_FALSE(bool(templates.initnew())) << text;
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
  EXPECT_TRUE(templates.oldtemplate().failure && templates.oldtemplate().lines.size() == 11);
}
