// Where the prefix is looked for.
#include "platform/prefix/machine.h"

#include "tests/support/testmachine.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

TEST(MachineFolder, IsNamedOrHoldsTheCurrentFolderOrIsTheUsersOwn) {
  const TestMachine machine;
  const fs::path inside = machine.drivec / "users";
  setenv("HOME", "/home/player", 1);

  setenv("WINEPREFIX", "/some/prefix/", 1);
  fs::current_path(inside);
  EXPECT_EQ(findmachine().folder, "/some/prefix");
  EXPECT_EQ(findmachine().currentfolder, inside.string());

  unsetenv("WINEPREFIX");
  EXPECT_EQ(findmachine().folder, machine.prefix.string());

  setenv("WINEPREFIX", "", 1);
  fs::remove(machine.prefix / "system.reg");
  EXPECT_EQ(findmachine().folder, "/home/player/.wine");
  fs::current_path("/");
  unsetenv("WINEPREFIX");
}
