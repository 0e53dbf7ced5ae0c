// Windows paths and the POSIX paths that they stand for.
#include "platform/prefix/paths.h"

#include "tests/support/prefix/machine_of.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

// The location of a path, relative to `root`; "?" and the reason if it has none.
std::string found(const Paths& paths, const std::string& path, const fs::path& root) {
  const auto location = paths.find(path);
  if (!location)
    return "? " + location.failure().reason;
  return (location->exists ? "" : "new ") +
         fs::path(location->path()).lexically_relative(root).string();
}

}  // namespace

TEST(Paths, FindsNamesIgnoringLetterCase) {
  TestMachine machine;
  for (const char* name : {"Maps/a.galaxy", "Maps/A.galaxy", "maps2/x", "\xC3\x89t\xC3\xA9/y"})
    write_file(machine.drive_c / name, "");
  fs::create_symlink("Maps", machine.drive_c / "Link");
  const Paths paths(machine_of(machine));
  const std::string missing = "? there is no such file or folder";
  const std::string rejected = "? Windows does not allow such a name";
  const std::pair<std::string, std::string> cases[] = {
      {"C:\\Maps\\a.galaxy", "Maps/a.galaxy"},
      {"c:/MAPS/A.galaxy", "Maps/A.galaxy"},
      {"C:\\maps\\A.GALAXY", "Maps/A.galaxy"},  // the first of the two
      {"C:\\\\Maps\\.\\\\a.galaxy\\", "Maps/a.galaxy"},
      {"C:\\\xC3\xA9T\xC3\x89\\Y", "\xC3\x89t\xC3\xA9/y"},
      {"C:\\link\\a.galaxy", "Link/a.galaxy"},
      {"C:\\MAPS\\new.galold", "new Maps/new.galold"},
      {"C:\\nowhere\\a", missing},
      {"C:\\Maps\\a.galaxy\\b", missing},
      {"Q:\\a", "? there is no such drive"},
      {"C:\\a\nb", rejected},
      {std::string("C:\\a\0b", 6), rejected},
      {"", missing},
  };
  for (const auto& [path, location] : cases)
    EXPECT_EQ(found(paths, path, machine.drive_c), location) << path;
}

TEST(Paths, NamesWithoutADriveStartAtTheCurrentFolder) {
  TestMachine machine;
  write_file(machine.data / "file.txt", "");
  const Paths paths(machine_of(machine));
  EXPECT_EQ(found(paths, "FILE.txt", machine.data), "file.txt");
  EXPECT_EQ(found(paths, "\\", machine.prefix.parent_path()), ".");
  EXPECT_EQ(found(paths, "/", machine.prefix.parent_path()), ".");
  write_file(machine.data / "back\\slash" / "here.txt", "");
  machine.data += "/back\\slash";
  EXPECT_TRUE(Paths(machine_of(machine)).find("here.txt")->exists);
  machine.data = machine.drive_c;
  EXPECT_EQ(found(Paths(machine_of(machine)), "\\users", machine.drive_c), "users");
}

TEST(Paths, DrivesAreTheLinksOfDosdevices) {
  TestMachine machine;
  const fs::path devices = machine.prefix / "dosdevices";
  const Machine drives = machine_of(machine);
  fs::remove_all(devices);
  EXPECT_EQ(Paths(drives).find("C:\\")->path(), machine.drive_c.string() + "/");
  EXPECT_EQ(Paths(drives).find("Z:\\")->path(), "/");
  fs::create_directory(devices);
  fs::create_directory(machine.prefix / "other");
  fs::create_symlink("..", devices / "a:");
  fs::create_symlink("../other", devices / "c:");
  fs::create_symlink("../drive_c/users", devices / "d:");
  fs::create_symlink("../drive_c/users", devices / "e:");
  fs::create_symlink("f:", devices / "f:");
  fs::create_symlink("/nowhere", devices / "G:");
  fs::create_symlink("../other", devices / "h::");
  write_file(machine.prefix / "other/file", "");
  const Paths paths(drives);
  EXPECT_EQ(paths.drives(), (std::vector<std::string>{"A:", "C:", "D:", "E:", "F:", "G:"}));
  EXPECT_EQ(found(paths, "C:\\file", machine.prefix / "other"), "file");
  EXPECT_EQ(found(paths, "F:\\", machine.prefix), "? the drive is not ready");
  EXPECT_EQ(found(paths, "G:\\", machine.prefix), "? the drive is not ready");

  const std::string user = (machine.drive_c / "users/me").string();
  EXPECT_EQ(paths.windows_path(user), "D:\\me");
  EXPECT_EQ(paths.windows_path(user, 'e'), "E:\\me");
  EXPECT_EQ(paths.windows_path(machine.drive_c / "users"), "D:\\");
  // On no drive at all.
  const std::string outside = paths.windows_path(machine.data);
  EXPECT_TRUE(outside.starts_with("\\\\?\\unix\\")) << outside;
  EXPECT_EQ(paths.find(outside)->path(), machine.data.string());
  EXPECT_FALSE(bool(paths.find("\\")));
}
