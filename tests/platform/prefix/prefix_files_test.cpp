// What only a machine in a folder has of files: links, and names that Windows does not allow.
#include "platform/prefix/prefix_files.h"

#include "tests/support/prefix/machine_of.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

class PrefixFilesTest : public testing::Test {
protected:
  PrefixFilesTest() {
    for (const char* name : {"a.galaxy", "A.galaxy", "B.galaxy", "a:b.galaxy", "sub/x.txt"})
      write_file(folder / name, "x");
    fs::create_symlink("B.galaxy", folder / "link.galaxy");
    fs::create_symlink("gone", folder / "gone.galaxy");
    fs::create_symlink("sub", folder / "slink");
    EXPECT_EQ(::mkfifo((folder / "fifo.galaxy").c_str(), 0600), 0);
  }

  TestMachine machine;
  const fs::path folder = machine.drive_c / "f";
  PrefixFiles files{machine_of(machine)};
};

}  // namespace

TEST_F(PrefixFilesTest, ALinkCountsAsWhatItLeadsTo) {
  const auto found = [&](const char* path, Match match) { return *files.lookup(path, match); };
  EXPECT_EQ(found("C:\\f\\link.galaxy", Match::files), "link.galaxy");
  EXPECT_EQ(found("C:\\f\\slink\\", Match::files), "x.txt");
  EXPECT_EQ(found("C:\\f\\slink", Match::files), "");
  EXPECT_EQ(found("C:\\f\\gone.galaxy", Match::files_and_folders), "");
  EXPECT_TRUE(bool(files.read("C:\\f\\link.galaxy")));
  EXPECT_FALSE(bool(files.read("C:\\f\\gone.galaxy")));
  EXPECT_EQ(*files.full_path("C:\\f\\SLINK"), "C:\\f\\slink");
  EXPECT_EQ(*files.full_path(z_path(folder / "sub")), "C:\\f\\sub");
}

TEST_F(PrefixFilesTest, ListsLinksAndNothingButFilesAndFolders) {
  std::string names;
  const auto entries = files.list("C:\\f", "*.galaxy");
  for (const Entry& entry : *entries)
    names += entry.name + (entry.folder ? "/" : "") + (entry.link ? "@ " : " ");
  EXPECT_EQ(names, "A.galaxy a.galaxy B.galaxy link.galaxy@ slink/@ sub/ ");
  fs::create_directory_symlink("/proc", folder / "proc");
  EXPECT_FALSE(bool(files.list("C:\\f\\proc", "*")));
  EXPECT_FALSE(bool(files.read("C:\\f\\fifo.galaxy")));
}

TEST_F(PrefixFilesTest, NeverWritesThroughALink) {
  fs::create_symlink(machine.program / "out", machine.data / "link.txt");
  EXPECT_FALSE(bool(files.write("link.txt", "c")));
  EXPECT_FALSE(bool(files.append("link.txt", "c")));
  EXPECT_FALSE(fs::exists(machine.program / "out"));
}
