// What the window's buttons and lists do, and when they do it.
#include "ui/handlers.h"

#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace fs = std::filesystem;

namespace {

class Handlers : public testing::Test {
protected:
  Handlers() {
    machine.install_with_maps();
    program.run([&] { load_form(form); });
  }

  TestMachine machine;
  Program program{machine};
  Form1& form = program.form;
  std::vector<std::string>& messages = program.screen.messages;
};

}  // namespace

TEST_F(Handlers, ADisabledButtonDoesNothingAndLeavesTheKeyboardToTheNextStep) {
  press(form, form.Command1);
  press(form, form.Command1);
  EXPECT_EQ(form.Label8.text(), "1");
  EXPECT_EQ(&focus_after(form), &form.Command2);
  press(form, form.Command6);
  EXPECT_FALSE(form.Command6.enabled());
  EXPECT_EQ(&focus_after(form), &form.Command2);
  press(form, form.Command2);
  EXPECT_EQ(&focus_after(form), &form.Command1);
}

TEST_F(Handlers, AFolderIsShownOrTheReasonWhyNot) {
  press(form, form.Command5);
  const std::string folder = form.Dir1.path();
  EXPECT_EQ(folder + "\\", form.pathlist[0]);
  EXPECT_EQ(form.File1.names(), (std::vector<std::string>{"a.galaxy", "b.galaxy"}));
  EXPECT_EQ(form.Drive1.drives, (std::vector<std::string>{"C:", "Z:"}));
  select_drive(form, form.Drive1.text());  // which leaves the lists

  fs::remove_all(machine.drive_c / "Games");
  press(form, form.Command4);
  select_drive(form, "Q:");
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_NE(messages[0].find("C:\\Games\\vora\\"), std::string::npos);
  EXPECT_NE(messages[1].find("Q:\\"), std::string::npos);
  EXPECT_EQ(form.Dir1.path(), folder);
  EXPECT_EQ(form.dirpath, folder);
  EXPECT_EQ(form.Drive1.text(), "C:");
}

TEST_F(Handlers, DuringASearchOnlyTheExitButtonDoesAnything) {
  int yields = 0;
  program.screen.pending = [&] {
    ++yields;
    press(form, form.Command1);
    press(form, form.Command4);
    open_folder(form, "C:\\");
    EXPECT_TRUE(form.searching);
    EXPECT_NE(form.Dir1.path(), "C:\\");
    EXPECT_EQ(program.run([&] { press(form, form.Command3); }), 0);
  };
  press(form, form.Command1);
  EXPECT_GT(yields, 0);
  EXPECT_EQ(form.Label8.text(), "1");
}

// With maps that the conversion would take for the player's, before it is started.
TEST_F(Handlers, AMissingListOfTheGamesOwnMapsIsReportedAfterTheSearch) {
  const auto say = [&](const std::vector<Control Form1::*>& buttons) {
    Program other(machine);
    other.run([&] { load_form(other.form); });
    for (const auto button : buttons) {
      EXPECT_TRUE(other.screen.messages.empty());
      press(other.form, other.form.*button);
    }
    EXPECT_FALSE(other.form.trouble);
    EXPECT_LE(other.screen.messages.size(), 1u);
    return other.screen.messages.empty() ? "" : other.screen.messages[0];
  };
  EXPECT_EQ(say({&Form1::Command1}), "");
  fs::rename(machine.data / "targetvoraver.txt", machine.data / "target");
  EXPECT_TRUE(
      say({&Form1::Command1, &Form1::Command6}).starts_with("targetvoraver.txt is missing"));
  fs::rename(machine.data / "target", machine.data / "targetvoraver.txt");
  fs::remove(machine.data / "original vora galaxies.txt");
  EXPECT_TRUE(say({&Form1::Command1}).starts_with("original vora galaxies.txt is missing: "));
  fs::remove_all(machine.user_folder);
  EXPECT_EQ(say({&Form1::Command1}), "");
}

TEST(Lists, AFolderOnNoDriveIsBelowOneRoot) {
  TestMachine machine;
  if (machine.prefix.empty())
    GTEST_SKIP() << "on Windows that is a folder that a server shares";
  const fs::path folder = machine.prefix / "out" / "side";
  fs::create_directories(folder / "below");
  fs::remove(machine.prefix / "dosdevices" / "z:");
  std::string path = folder.string();
  std::ranges::replace(path, '/', '\\');
  Program program(machine);
  DirectoryList& list = program.form.Dir1;
  ASSERT_TRUE(bool(list.set_path("\\\\?\\unix" + path)));
  const auto rows = list.rows();
  EXPECT_EQ(rows.front().path, "\\\\?\\unix\\");
  EXPECT_EQ(rows.back().name, "below");
  for (const FolderRow& row : rows)
    EXPECT_TRUE(bool(list.set_path(row.path))) << row.path;
}
