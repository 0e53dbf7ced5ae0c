// Looking up, listing, reading and writing files, on every machine.
#include "platform/files.h"

#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

namespace {

class FilesTest : public testing::Test {
protected:
  void add(const std::string& name) {
    write_file(machine.drive_c / "f" / std::u8string(name.begin(), name.end()), "x");
  }

  TestMachine machine;
  const std::unique_ptr<Files> files = machine.files();
};

}  // namespace

TEST_F(FilesTest, LooksUpNamesButNeverHiddenOnesOrPatterns) {
  for (const char* name : {"Map.galaxy", "b.txt", ".hidden", "sub/x", "empty/only folders/x"})
    add(name);
  const std::string failed = "failed";
  const char* const dotted = machine.hides_dots() ? "" : ".hidden";
  const struct {
    const char* name;
    std::string file;   // what is found among files,
    std::string entry;  // and among files and folders
  } cases[] = {
      {"mAP.GALAXY", "Map.galaxy", "Map.galaxy"},
      {"sub\\..\\.\\Map.galaxy", "Map.galaxy", "Map.galaxy"},
      {"", machine.hides_dots() ? "b.txt" : dotted, "."},
      {"SUB", "", "sub"},
      {"sub\\", "x", "."},
      {"sub\\.", "", "."},
      {"empty\\", "", "."},
      {"missing\\", "", ""},
      {"missing\\x", "", ""},
      {"Map.galaxy\\", "", ""},
      {".hidden", dotted, dotted},
      {"*.galaxy", failed, failed},
      {"Map?galaxy", failed, failed},
      {"Map.galaxy:stream", failed, failed},
  };
  const auto lookup = [&](const std::string& path, Match match) {
    const auto name = files->lookup(path, match);
    return name ? *name : failed;
  };
  for (const auto& c : cases) {
    EXPECT_EQ(lookup(std::string("C:\\f\\") + c.name, Match::files), c.file) << c.name;
    EXPECT_EQ(lookup(std::string("C:\\f\\") + c.name, Match::files_and_folders), c.entry) << c.name;
  }
  EXPECT_EQ(lookup("C:\\", Match::files_and_folders), ".");
  EXPECT_EQ(lookup("Q:\\", Match::files_and_folders), "");
}

TEST_F(FilesTest, ListsInOrderOfLoweredNames) {
  for (const char* name : {"b.galaxy", "A.galaxy", "C.GALAXY", "_.galaxy", "È.galaxy", "é.galaxy",
                           "Жук.galaxy", "x.txt", "c.galaxy2", ".h.galaxy", "Sub/x", "s.galaxy/x"})
    add(name);
  std::string names;
  const auto entries = files->list("C:\\f\\", "*.galaxy");
  for (const Entry& entry : *entries)
    names += entry.name + (entry.folder ? "/ " : " ");
  if (!machine.hides_dots())
    names.erase(0, std::string_view(".h.galaxy ").size());
  EXPECT_EQ(names, "_.galaxy A.galaxy b.galaxy C.GALAXY s.galaxy/ Sub/ È.galaxy é.galaxy "
                   "Жук.galaxy ");
  EXPECT_EQ(files->list("C:\\f\\Sub", "*")->size(), 1u);
  EXPECT_FALSE(bool(files->list("C:\\f\\missing", "*")));
  EXPECT_FALSE(bool(files->list("C:\\f\\x.txt", "*")));
}

TEST_F(FilesTest, FullPathsAreSpelledAsOnTheDisk) {
  add("Old School/x");
  EXPECT_EQ(*files->full_path("c:\\F\\\\OLD school\\"), "C:\\f\\Old School");
  EXPECT_EQ(*files->full_path("c:\\"), "C:\\");
  EXPECT_EQ(*files->full_path("."), z_path(machine.data));
  EXPECT_EQ(*files->full_path("..\\PROGRAM"), z_path(machine.program));
  EXPECT_EQ(*files->full_path("\\"), "Z:\\");
  EXPECT_TRUE(files->full_path("C:\\f\\missing").failure().missing());
  EXPECT_FALSE(bool(files->full_path("C:\\f\\Old School\\x")));
}

TEST_F(FilesTest, ReadsAndWritesBytes) {
  const std::string bytes("a\r\n\0\xFF\x1A", 6);
  EXPECT_TRUE(bool(files->write("text.txt", "something longer than what follows")));
  EXPECT_TRUE(bool(files->write("text.txt", bytes)));
  EXPECT_TRUE(bool(files->append("TEXT.txt", "more")));
  EXPECT_EQ(*files->read("text.txt"), bytes + "more");
  EXPECT_EQ(read_file(machine.data / "text.txt"), bytes + "more");
  EXPECT_TRUE(bool(files->append("new.txt", "")));
  EXPECT_EQ(*files->read("new.txt"), "");
  EXPECT_TRUE(files->read("missing.txt").failure().missing());
  EXPECT_FALSE(bool(files->read("C:\\users")));
  // A file with another hard link, which may be a map, is replaced and not written into.
  write_file(machine.data / "a.galaxy", "map");
  std::filesystem::create_hard_link(machine.data / "a.galaxy", machine.data / "info.txt");
  EXPECT_FALSE(bool(files->append("info.txt", "more")));
  EXPECT_TRUE(bool(files->write("info.txt", "info")));
  EXPECT_TRUE(bool(files->append("info.txt", "more")));
  EXPECT_EQ(read_file(machine.data / "info.txt"), "infomore");
  EXPECT_EQ(read_file(machine.data / "a.galaxy"), "map");
  EXPECT_FALSE(bool(files->write("no\\such\\folder.txt", "x")));
  EXPECT_FALSE(bool(files->read("NUL")));
}
