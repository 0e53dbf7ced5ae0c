// Where the Wine prefix is searched for.
#include "platform/prefix/machine.h"

#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

TEST(MachineFolder, IsNamedOrHoldsTheCurrentFolderOrIsTheUsersOwn) {
  const TestMachine machine;
  const fs::path inside = machine.drive_c / "users";
  setenv("HOME", "/home/player", 1);

  setenv("WINEPREFIX", "/some/prefix/", 1);
  fs::current_path(inside);
  EXPECT_EQ(find_machine().folder, "/some/prefix");
  EXPECT_EQ(find_machine().current_folder, inside.string());

  unsetenv("WINEPREFIX");
  EXPECT_EQ(find_machine().folder, machine.prefix.string());

  setenv("WINEPREFIX", "", 1);
  fs::remove(machine.prefix / "system.reg");
  EXPECT_EQ(find_machine().folder, "/home/player/.wine");
  fs::current_path("/");
  unsetenv("WINEPREFIX");
}
