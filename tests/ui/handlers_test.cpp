// What the window's buttons and lists do, and when they do it.
#include "ui/handlers.h"

#include "tests/support/testmachine.h"
#include "ui/layout.h"
#include "ui/loadform.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

class Handlers : public testing::Test {
protected:
  Handlers() {
    machine.writedata();
    machine.install("vora", {1, 2, 3, 4});
    writefile(machine.userfolder / "settings.txt", "");
    for (const char* name : {"a.galaxy", "b.galaxy", "sub/c.galaxy"})
      writefile(machine.userfolder / name, oldmap);
    program.run([&] { loadform(form); });
  }

  TestMachine machine;
  Program program{machine};
  Form1& form = program.form;
  std::vector<std::string>& messages = program.screen.messages;
};

}  // namespace

TEST_F(Handlers, SearchAndConversionAlternate) {
  press(form, form.Command2);
  EXPECT_EQ(form.Text2.text(), "");
  press(form, form.Command1);
  EXPECT_FALSE(form.Command1.enabled());
  EXPECT_TRUE(form.Command2.enabled());
  EXPECT_EQ(form.Label6.text(), "2");
  press(form, form.Command1);
  EXPECT_EQ(form.Label8.text(), "1");
  press(form, form.Command2);
  EXPECT_TRUE(form.Command1.enabled());
  EXPECT_FALSE(form.Command2.enabled());
  EXPECT_EQ(form.Label8.text(), "2");
  EXPECT_EQ(form.Label4.text(), "2");
  EXPECT_EQ(form.Text1.text(), form.Text2.text());
  press(form, form.Command1);
  EXPECT_EQ(form.Text1.text(), form.Text2.text() + form.Text2.text());
}

TEST_F(Handlers, OnlyTheExitButtonWorksDuringASearch) {
  const std::string folder = form.Dir1.path();
  program.screen.pending = [&] {
    for (Control* button : {&form.Command1, &form.Command4, &form.Command6})
      press(form, *button);
    openfolder(form, "C:\\users");
    selectdrive(form, "C:");
    EXPECT_EQ(form.Dir1.path(), folder);
  };
  press(form, form.Command1);
  EXPECT_EQ(form.foundlist.size(), 4u);
  EXPECT_EQ(form.Label8.text(), "1");
  EXPECT_TRUE(form.Command6.enabled());

  press(form, form.Command2);
  program.screen.pending = [&] { press(form, form.Command3); };
  EXPECT_EQ(program.run([&] { press(form, form.Command1); }), 0);
}

TEST_F(Handlers, TheListsFollowOneAnother) {
  press(form, form.Command5);
  EXPECT_EQ(form.Dir1.path() + "\\", form.pathlist[0]);
  EXPECT_EQ(form.dirpath, form.Dir1.path());
  EXPECT_EQ(form.File1.names(), (std::vector<std::string>{"a.galaxy", "b.galaxy"}));
  EXPECT_EQ(form.Dir1.subfolders(), std::vector<std::string>{"sub"});
  openfolder(form, form.Dir1.path() + "\\sub");
  EXPECT_EQ(form.File1.names(), std::vector<std::string>{"c.galaxy"});
  press(form, form.Command4);
  EXPECT_EQ(form.Dir1.path(), "C:\\Games\\vora");
  EXPECT_EQ(form.Drive1.drives(), (std::vector<std::string>{"C:", "Z:"}));
  EXPECT_EQ(form.Drive1.text(), "Z:");
  selectdrive(form, "C:");
  EXPECT_EQ(form.Dir1.path(), "C:\\");
  EXPECT_EQ(form.File1.path(), "C:\\");
  EXPECT_EQ(form.rootpath, "C:\\");
}

TEST_F(Handlers, FoldersThatCannotBeShownAreTold) {
  fs::remove_all(machine.drivec / "Games");
  const std::string folder = form.Dir1.path();
  press(form, form.Command4);
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_NE(messages[0].find("C:\\Games\\vora\\"), std::string::npos);
  form.pathlist[1].clear();
  press(form, form.Command4);
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[1], "No folder is known yet for program space galaxies.");
  selectdrive(form, "Q:");
  ASSERT_EQ(messages.size(), 3u);
  EXPECT_NE(messages[2].find("Q:\\"), std::string::npos);
  EXPECT_EQ(form.Dir1.path(), folder);
  EXPECT_EQ(form.dirpath, folder);
  EXPECT_EQ(form.Drive1.text(), "Z:");
}

TEST(Layout, HasEveryControlOnceInsideTheWindow) {
  TestMachine machine;
  Program program(machine);
  ASSERT_EQ(layout().size(), program.form.controls().size());
  applylayout(program.form);
  for (const ControlLayout& row : layout()) {
    EXPECT_LE(row.left + row.width, windowwidth) << row.name;
    EXPECT_LE(row.top + row.height, windowheight) << row.name;
    const bool edition = row.name == std::string("Command6") || row.name == std::string("Command7");
    EXPECT_EQ(row.enabled, !edition) << row.name;
    EXPECT_EQ(row.visible, row.name != std::string("Label19"));
  }
}
