// Windows paths and what they stand for.
#include "platform/prefix/paths.h"

#include "tests/support/prefix/machineof.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

// Where a path leads, relative to the drive's root; "?" and the reason when it leads nowhere.
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
    writefile(machine.drivec / name, "");
  fs::create_symlink("Maps", machine.drivec / "Link");
  const Paths paths(machineof(machine));
  const std::string missing = "? there is no such file or folder";
  const std::string rejected = "? Windows does not allow such a name";
  const std::pair<std::string, std::string> cases[] = {
      {"C:\\Maps\\a.galaxy", "Maps/a.galaxy"},
      {"c:/MAPS/A.galaxy", "Maps/A.galaxy"},
      {"C:\\maps\\A.GALAXY", "Maps/A.galaxy"},  // the first of the two
      {"C:\\\\Maps\\.\\\\a.galaxy\\", "Maps/a.galaxy"},
      {"C:\\maps2\\..\\Maps\\..\\..\\MAPS2", "maps2"},
      {"C:\\\xC3\xA9T\xC3\x89\\Y", "\xC3\x89t\xC3\xA9/y"},
      {"C:\\link\\a.galaxy", "Link/a.galaxy"},
      {"C:\\MAPS\\new.galold", "new Maps/new.galold"},
      {"C:\\nowhere\\a", missing},
      {"C:\\Maps\\a.galaxy\\b", missing},
      {"Q:\\a", "? there is no such drive"},
      {"C:\\Maps\\*.galaxy", rejected},
      {"C:\\a\nb", rejected},
      {"C:\\a:b", rejected},
      {std::string("C:\\a\0b", 6), rejected},
      {"", missing},
      {"C:\\", "."},
  };
  for (const auto& [path, location] : cases)
    EXPECT_EQ(found(paths, path, machine.drivec), location) << path;
}

TEST(Paths, NamesWithoutADriveStartAtTheCurrentFolder) {
  TestMachine machine;
  writefile(machine.data / "file.txt", "");
  const Paths paths(machineof(machine));
  EXPECT_EQ(found(paths, "FILE.txt", machine.data), "file.txt");
  EXPECT_EQ(found(paths, "..\\data\\file.txt", machine.data), "file.txt");
  EXPECT_EQ(paths.find("\\")->path(), "/");
  writefile(machine.data / "back\\slash" / "here.txt", "");
  machine.data += "/back\\slash";
  EXPECT_TRUE(Paths(machineof(machine)).find("here.txt")->exists);
  machine.data = machine.drivec;
  EXPECT_EQ(found(Paths(machineof(machine)), "\\users", machine.drivec), "users");
}

TEST(Paths, DrivesAreTheLinksOfDosdevices) {
  TestMachine machine;
  const fs::path devices = machine.prefix / "dosdevices";
  fs::create_directory(devices);
  fs::create_directory(machine.prefix / "other");
  fs::create_symlink("../other", devices / "c:");
  fs::create_symlink("../drive_c/users", devices / "d:");
  fs::create_symlink("../drive_c/users", devices / "e:");
  fs::create_symlink("f:", devices / "f:");
  fs::create_symlink("/nowhere", devices / "G:");
  fs::create_symlink("../other", devices / "h::");
  writefile(machine.prefix / "other/file", "");
  const Paths paths(machineof(machine));
  EXPECT_EQ(paths.drives(), (std::vector<std::string>{"C:", "D:", "E:", "F:", "G:"}));
  EXPECT_EQ(found(paths, "C:\\file", machine.prefix / "other"), "file");
  EXPECT_EQ(found(paths, "F:\\", machine.prefix), "? the drive is not ready");
  EXPECT_EQ(found(paths, "G:\\", machine.prefix), "? the drive is not ready");

  const std::string user = (machine.drivec / "users/me").string();
  EXPECT_EQ(paths.windowspath(user), "D:\\me");
  EXPECT_EQ(paths.windowspath(user, 'e'), "E:\\me");
  EXPECT_EQ(paths.windowspath(machine.drivec / "users"), "D:\\");
  // On no drive at all.
  const std::string outside = paths.windowspath(machine.data);
  EXPECT_TRUE(outside.starts_with("\\\\?\\unix\\")) << outside;
  EXPECT_EQ(paths.find(outside)->path(), machine.data.string());
  EXPECT_FALSE(bool(paths.find("\\")));
}
