// Looking up, listing, reading and writing files of a machine in a folder.
#include "platform/prefix/prefixfiles.h"

#include "tests/support/prefix/machineof.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

std::string names(const std::vector<Entry>& entries) {
  std::string text;
  for (const Entry& entry : entries)
    text += entry.name + (entry.folder ? "/" : "") + (entry.link ? "@ " : " ");
  return text;
}

}  // namespace

TEST(PrefixFiles, LooksUpWhatAPathMatchesAndReadsThroughLinks) {
  TestMachine machine;
  for (const char* name : {"f/b.txt", "f/A.txt", "f/.hidden", "f/sub/x"})
    writefile(machine.drivec / name, "");
  fs::create_directories(machine.drivec / "empty/only folders");
  fs::create_symlink("f/b.txt", machine.drivec / "link");
  fs::create_symlink("f", machine.drivec / "folderlink");
  fs::create_symlink("nowhere", machine.drivec / "dangling");
  const struct {
    const char* path;
    const char* file;   // what is found among files,
    const char* entry;  // and among files and folders
  } cases[] = {
      {"C:\\f\\b.txt", "b.txt", "b.txt"},
      {"C:\\F\\B.TXT", "b.txt", "b.txt"},
      {"C:\\f\\", "A.txt", "."},
      {"C:\\f", "", "f"},
      {"C:\\f\\.", "", "."},
      {"C:\\f\\.hidden", "", ""},
      {"C:\\empty\\", "", "."},
      {"C:\\none\\", "", ""},
      {"C:\\none\\a", "", ""},
      {"C:\\f\\b.txt\\", "", ""},
      {"C:\\link", "link", "link"},
      {"C:\\folderlink\\", "A.txt", "."},
      {"C:\\dangling", "", ""},
      {"Q:\\", "", ""},
      {"", "", ""},
  };
  PrefixFiles files(machineof(machine));
  for (const auto& c : cases) {
    EXPECT_EQ(*files.lookup(c.path, Match::files), c.file) << c.path;
    EXPECT_EQ(*files.lookup(c.path, Match::filesandfolders), c.entry) << c.path;
  }
  EXPECT_FALSE(bool(files.lookup("C:\\f\\*.txt", Match::files)));
  EXPECT_TRUE(bool(files.read("C:\\link")));
  EXPECT_FALSE(bool(files.read("C:\\dangling")));
}

TEST(PrefixFiles, ListsInOrderOfLoweredNames) {
  TestMachine machine;
  const fs::path folder = machine.drivec / "l";
  for (const char* name :
       {"b.galaxy", "A.galaxy", "a.galaxy", "C.GALAXY", "_.galaxy", "\xC3\x89.galaxy",
        "\xC3\xA8.galaxy", "x.txt", ".h.galaxy", "a:b.galaxy", "sub/x", "Sub2.galaxy/x"})
    writefile(folder / name, "");
  fs::create_symlink("sub", folder / "slink");
  fs::create_symlink("b.galaxy", folder / "flink.galaxy");
  fs::create_symlink("gone", folder / "gone.galaxy");
  ASSERT_EQ(::mkfifo((folder / "fifo.galaxy").c_str(), 0600), 0);
  PrefixFiles files(machineof(machine));
  EXPECT_EQ(names(*files.list("C:\\l", "*.galaxy")),
            "_.galaxy A.galaxy a.galaxy b.galaxy C.GALAXY flink.galaxy@ slink/@ sub/ "
            "Sub2.galaxy/ \xC3\xA8.galaxy \xC3\x89.galaxy ");
  EXPECT_EQ(names(*files.list("C:\\l\\sub", "*")), "x ");
  EXPECT_FALSE(bool(files.list("C:\\none", "*")));
  EXPECT_FALSE(bool(files.list("Z:\\proc", "*")));
  EXPECT_FALSE(bool(files.read("C:\\l\\fifo.galaxy")));
}

TEST(PrefixFiles, FullPathsAreSpelledAsOnTheDisk) {
  TestMachine machine;
  fs::create_directories(machine.drivec / "Games/Vorakai");
  fs::create_symlink("Games", machine.drivec / "Play");
  PrefixFiles files(machineof(machine));
  EXPECT_EQ(*files.fullpath("c:\\games\\\\VORAKAI\\"), "C:\\Games\\Vorakai");
  EXPECT_EQ(*files.fullpath("C:\\play\\Vorakai"), "C:\\Play\\Vorakai");
  EXPECT_EQ(*files.fullpath("c:\\"), "C:\\");
  EXPECT_EQ(*files.fullpath(zpath(machine.drivec / "Games")), "C:\\Games");
  EXPECT_EQ(*files.fullpath("."), zpath(machine.data));
  EXPECT_TRUE(files.fullpath("C:\\nowhere").failure().missing);
}

TEST(PrefixFiles, WritesTextFilesInPlaceButNeverThroughALink) {
  TestMachine machine;
  PrefixFiles files(machineof(machine));
  EXPECT_TRUE(bool(files.append("info.txt", "a")));
  EXPECT_TRUE(bool(files.append("INFO.TXT", "b")));
  EXPECT_EQ(readfile(machine.data / "info.txt"), "ab");
  EXPECT_TRUE(bool(files.write("info.txt", "c")));
  EXPECT_EQ(*files.read("info.txt"), "c");
  fs::create_symlink(machine.program / "out", machine.data / "link.txt");
  EXPECT_FALSE(bool(files.write("link.txt", "c")));
  EXPECT_FALSE(bool(files.append("link.txt", "c")));
  EXPECT_FALSE(fs::exists(machine.program / "out"));
}
