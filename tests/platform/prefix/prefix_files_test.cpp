// Looking up, listing, reading and writing files of a machine in a folder.
#include "platform/prefix/prefix_files.h"

#include "tests/support/prefix/machine_of.h"

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
    write_file(machine.drive_c / name, "");
  fs::create_directories(machine.drive_c / "empty/only folders");
  fs::create_symlink("f/b.txt", machine.drive_c / "link");
  fs::create_symlink("f", machine.drive_c / "folderlink");
  fs::create_symlink("nowhere", machine.drive_c / "dangling");
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
  PrefixFiles files(machine_of(machine));
  for (const auto& c : cases) {
    EXPECT_EQ(*files.lookup(c.path, Match::files), c.file) << c.path;
    EXPECT_EQ(*files.lookup(c.path, Match::files_and_folders), c.entry) << c.path;
  }
  EXPECT_FALSE(bool(files.lookup("C:\\f\\*.txt", Match::files)));
  EXPECT_TRUE(bool(files.read("C:\\link")));
  EXPECT_FALSE(bool(files.read("C:\\dangling")));
}

TEST(PrefixFiles, ListsInOrderOfLoweredNames) {
  TestMachine machine;
  const fs::path folder = machine.drive_c / "l";
  for (const char* name :
       {"b.galaxy", "A.galaxy", "a.galaxy", "C.GALAXY", "_.galaxy", "\xC3\x89.galaxy",
        "\xC3\xA8.galaxy", "x.txt", ".h.galaxy", "a:b.galaxy", "sub/x", "Sub2.galaxy/x"})
    write_file(folder / name, "");
  fs::create_symlink("sub", folder / "slink");
  fs::create_symlink("b.galaxy", folder / "flink.galaxy");
  fs::create_symlink("gone", folder / "gone.galaxy");
  ASSERT_EQ(::mkfifo((folder / "fifo.galaxy").c_str(), 0600), 0);
  PrefixFiles files(machine_of(machine));
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
  fs::create_directories(machine.drive_c / "Games/Vorakai");
  fs::create_symlink("Games", machine.drive_c / "Play");
  PrefixFiles files(machine_of(machine));
  EXPECT_EQ(*files.full_path("c:\\games\\\\VORAKAI\\"), "C:\\Games\\Vorakai");
  EXPECT_EQ(*files.full_path("C:\\play\\Vorakai"), "C:\\Play\\Vorakai");
  EXPECT_EQ(*files.full_path("c:\\"), "C:\\");
  EXPECT_EQ(*files.full_path(z_path(machine.drive_c / "Games")), "C:\\Games");
  EXPECT_EQ(*files.full_path("."), z_path(machine.data));
  EXPECT_TRUE(files.full_path("C:\\nowhere").failure().missing);
}

TEST(PrefixFiles, WritesTextFilesInPlaceButNeverThroughALink) {
  TestMachine machine;
  PrefixFiles files(machine_of(machine));
  EXPECT_TRUE(bool(files.append("info.txt", "a")));
  EXPECT_TRUE(bool(files.append("INFO.TXT", "b")));
  EXPECT_EQ(read_file(machine.data / "info.txt"), "ab");
  EXPECT_TRUE(bool(files.write("info.txt", "c")));
  EXPECT_EQ(*files.read("info.txt"), "c");
  fs::create_symlink(machine.program / "out", machine.data / "link.txt");
  EXPECT_FALSE(bool(files.write("link.txt", "c")));
  EXPECT_FALSE(bool(files.append("link.txt", "c")));
  EXPECT_FALSE(fs::exists(machine.program / "out"));
}
