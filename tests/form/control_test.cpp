// The lists of the form.
#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

using Names = std::vector<std::string>;

TEST(Control, TheDirectoryListShowsSubfoldersInOrder) {
  TestMachine machine;
  for (const char* name : {"b", "A", "c", ".hidden"})
    std::filesystem::create_directories(machine.drive_c / "maps" / name);
  write_file(machine.drive_c / "maps" / "file", "");
  Program program(machine);
  DirectoryList& list = program.form.Dir1;
  int changes = 0;
  list.changed = [&] { ++changes; };

  EXPECT_TRUE(bool(list.set_path("c:\\MAPS\\\\")));
  EXPECT_EQ(list.path(), "C:\\maps");
  EXPECT_EQ(list.subfolders(), (Names{"A", "b", "c"}));
  EXPECT_TRUE(bool(list.set_path("C:\\maps")));
  EXPECT_EQ(changes, 1);

  const auto missing = list.set_path("C:\\nowhere");
  ASSERT_FALSE(bool(missing));
  EXPECT_EQ(missing.failure().path, "C:\\nowhere");
  EXPECT_EQ(list.path(), "C:\\maps");
  EXPECT_EQ(changes, 1);

  EXPECT_TRUE(bool(list.set_path("C:\\")));
  EXPECT_EQ(list.path(), "C:\\");
}

TEST(Control, AFolderOnNoDriveIsBelowOneRoot) {
  TestMachine machine;
  if (machine.prefix.empty())
    GTEST_SKIP() << "on Windows that is a folder that a server shares";
  const std::filesystem::path folder = machine.prefix / "out" / "side";
  std::filesystem::create_directories(folder / "below");
  std::filesystem::create_directory(machine.prefix / "dosdevices");
  std::filesystem::create_directory_symlink(machine.drive_c, machine.prefix / "dosdevices" / "c:");
  Program program(machine);
  DirectoryList& list = program.form.Dir1;
  ASSERT_TRUE(bool(list.set_path("\\\\?\\unix" + z_path(folder).substr(2))));
  const auto rows = list.rows();
  EXPECT_EQ(rows.front().path, "\\\\?\\unix\\");
  EXPECT_EQ(rows.back().name, "below");
  for (const FolderRow& row : rows)
    EXPECT_TRUE(bool(list.set_path(row.path))) << row.path;
}

TEST(Control, TheFileListFollowsItsPattern) {
  TestMachine machine;
  for (const char* name : {"b.galaxy", "A.GALAXY", "c.galold", ".galaxy", "d.galaxy/inside"})
    write_file(machine.drive_c / name, "");
  Program program(machine);
  FileList& list = program.form.File1;
  list.set_path("C:\\");
  EXPECT_EQ(list.names(), (Names{"A.GALAXY", "b.galaxy", "c.galold"}));
  list.set_pattern("*.galaxy");
  EXPECT_EQ(list.names(), (Names{"A.GALAXY", "b.galaxy"}));
  list.set_path("C:\\nowhere");
  EXPECT_EQ(list.names(), Names{});
}
