// What is wrong with a folder that should be a Wine prefix with the game.
#include "platform/prefix/prefix_check.h"

#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

TEST(PrefixCheck, ExplainsWhyThereIsNoGameAndSuggestsThePrefixNearby) {
  const TestMachine machine;
  const fs::path root = machine.prefix.parent_path();
  const auto prefix = machine.prefix.string();
  fs::create_directories(root / "above");
  fs::create_directory_symlink(machine.prefix, root / "above" / "pfx");
  write_file(root / "folder/system.reg/file", "");
  write_file(root / "file", "");
  fs::create_directories(root / "loop");
  fs::create_symlink("system.reg", root / "loop" / "system.reg");
  const std::string meant = "; did you mean " + prefix + "?";
  const struct {
    fs::path folder;
    std::string explained;  // "F" stands for the folder
  } cases[] = {
      {machine.prefix, "the game is not registered in the Wine prefix F"},
      {root / "none", "the Wine prefix F cannot be used: there is no such folder"},
      {root / "file", "the Wine prefix F cannot be used: there is no such folder"},
      {machine.data, "the Wine prefix F cannot be used: it has no system.reg"},
      {root / "folder", "the Wine prefix F cannot be used: its system.reg is not a regular file"},
      {root / "loop", "the Wine prefix F cannot be used: its system.reg cannot be read: "
                      "Too many levels of symbolic links"},
      {machine.drive_c, "the Wine prefix F cannot be used: it has no system.reg" + meant},
      {machine.drive_c / "users", "the Wine prefix F cannot be used: it has no system.reg" + meant},
      {root / "above", "the Wine prefix F cannot be used: it has no system.reg; did you mean " +
                           (root / "above/pfx").string() + "?"},
  };
  for (const auto& c : cases) {
    std::string expected = c.explained;
    expected.replace(expected.find("F"), 1, c.folder.string());
    EXPECT_EQ(explain_unregistered(c.folder, "the game"), expected);
  }
}
