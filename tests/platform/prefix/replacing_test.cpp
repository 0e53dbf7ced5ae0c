// What only a POSIX system has of a map: permissions, an owner and links.
#include "platform/prefix/prefixfiles.h"

#include "tests/support/prefix/machineof.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

using Tree = std::map<std::string, std::string>;

namespace {

class ReplaceOnPosix : public testing::Test {
protected:
  ReplaceOnPosix() { writefile(maps / "a.galaxy", "old"); }

  Result<Done> replace() {
    return files.replace({"C:\\m\\a.galaxy",
                          "old",
                          {{"C:\\m\\a.galfix", "fix"}, {"C:\\m\\a.galaxy", "new"}},
                          "C:\\m\\a.galold"});
  }

  TestMachine machine;
  const fs::path maps = machine.drivec / "m";
  PrefixFiles files{machineof(machine)};
};

}  // namespace

TEST_F(ReplaceOnPosix, KeepsPermissionsAndOwner) {
  ::chmod((maps / "a.galaxy").c_str(), 0440);
  const bool root = ::geteuid() == 0;
  ASSERT_TRUE(!root || ::chown((maps / "a.galaxy").c_str(), 1234, 1234) == 0);
  EXPECT_TRUE(bool(replace()));
  for (const char* name : {"a.galaxy", "a.galold", "a.galfix"}) {
    struct stat status;
    ASSERT_EQ(::stat((maps / name).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0440u) << name;
    EXPECT_TRUE(!root || status.st_uid == 1234u) << name;
  }
}

TEST_F(ReplaceOnPosix, LinksAreNeverFollowed) {
  writefile(machine.drivec / "elsewhere", "untouched");
  fs::create_symlink("../elsewhere", maps / "a.galold");
  fs::create_symlink("nowhere", maps / "a.galold2");
  fs::create_symlink("../elsewhere", maps / "a.galfix");
  EXPECT_TRUE(bool(replace()));
  EXPECT_EQ(tree(maps), (Tree{{"a.galaxy", "new"},
                              {"a.galold", "old"},
                              {"a.galfix", "fix"},
                              {"a.galold2", "-> nowhere"},
                              {"a.galold3", "-> ../elsewhere"}}));
  EXPECT_EQ(readfile(machine.drivec / "elsewhere"), "untouched");
}

TEST_F(ReplaceOnPosix, AMapThatBecameALinkIsLeftAlone) {
  fs::rename(maps / "a.galaxy", maps / "b.galaxy");
  fs::create_symlink("b.galaxy", maps / "a.galaxy");
  EXPECT_FALSE(bool(replace()));
  EXPECT_EQ(readfile(maps / "b.galaxy"), "old");
}
