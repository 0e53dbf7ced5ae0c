// What only a POSIX system has of a map: permissions, an owner and links.
#include "platform/prefix/prefix_files.h"

#include "tests/support/prefix/machine_of.h"

#include <gtest/gtest.h>

#include <cerrno>

#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// Looks at files whose permissions are about to be set, or fails to set them; lets another file take
// the map's name while a link is made to it.
class OddDisk : public Disk {
public:
  int link(int folder, const char* from, const char* to) override {
    return Disk::link(folder, linked.empty() ? from : linked.c_str(), to);
  }
  int permit(int file, mode_t mode) override {
    struct stat status {};
    ::fstat(file, &status);
    EXPECT_TRUE(status.st_mode & S_IRUSR);
    ++permitted;
    errno = error;
    return error ? -1 : Disk::permit(file, mode);
  }

  std::string linked;  // instead of the map
  int permitted = 0;
  int error = 0;
};

class ReplaceOnPosix : public testing::Test {
protected:
  ReplaceOnPosix() { write_file(maps / "a.galaxy", "old"); }

  static Replacement wanted() { return {"old", {{"a.galfix", "fix"}}, "new", "a.galold"}; }
  Result<Done> replace() { return open_and_replace(files, "C:\\m\\a.galaxy", wanted()); }

  TestMachine machine;
  const fs::path maps = machine.drive_c / "m";
  OddDisk disk;
  PrefixFiles files{machine_of(machine), disk};
};

}  // namespace

// Until it takes its name a new file can be opened by its owner, who may have to clear it up.
TEST_F(ReplaceOnPosix, KeepsPermissionsAndOwner) {
  const bool root = ::geteuid() == 0;
  for (const mode_t mode : {0440, 0400, 06750}) {
    write_file(maps / "a.galaxy", "old");
    ASSERT_TRUE(!root || ::chown((maps / "a.galaxy").c_str(), 1234, 1234) == 0);
    ::chmod((maps / "a.galaxy").c_str(), mode);
    EXPECT_TRUE(bool(replace()));
    for (const char* name : {"a.galaxy", "a.galold", "a.galfix"}) {
      struct stat status;
      ASSERT_EQ(::stat((maps / name).c_str(), &status), 0);
      EXPECT_EQ(status.st_mode & 07777, name[5] == 'o' ? mode : mode & 0777) << name;
      EXPECT_TRUE(!root || status.st_uid == 1234u) << name;
    }
    EXPECT_EQ(disk.permitted, 2);
    fs::remove_all(maps);
    disk.permitted = 0;
  }
}

// A file system that knows no permissions is no reason to stop, any other trouble is.
TEST_F(ReplaceOnPosix, TellsOfPermissionsThatCannotBeSet) {
  const Tree before = tree(maps);
  disk.error = EIO;
  const auto done = replace();
  ASSERT_FALSE(bool(done));
  EXPECT_EQ(done.failure().action, "write a.galfix");
  EXPECT_EQ(tree(maps), before);
  disk.error = EPERM;
  EXPECT_TRUE(bool(replace()));
}

TEST_F(ReplaceOnPosix, ABackupIsTheMapThatWasRead) {
  disk.linked = "theirs";
  write_file(maps / "theirs", "theirs");
  EXPECT_EQ(replace().failure().reason, "it has changed since it was read");
  EXPECT_EQ(read_file(maps / "a.galaxy"), "old");
}

TEST_F(ReplaceOnPosix, LinksAreNeverFollowed) {
  write_file(machine.drive_c / "elsewhere", "untouched");
  fs::create_symlink("../elsewhere", maps / "a.galold");
  fs::create_symlink("nowhere", maps / "a.galold2");
  fs::create_symlink("../elsewhere", maps / "a.galfix");
  EXPECT_TRUE(bool(replace()));
  EXPECT_EQ(tree(maps), (Tree{{"a.galaxy", "new"},
                              {"a.galold", "old"},
                              {"a.galfix", "fix"},
                              {"a.galold2", "-> nowhere"},
                              {"a.galold3", "-> ../elsewhere"}}));
  EXPECT_EQ(read_file(machine.drive_c / "elsewhere"), "untouched");
}

// What has the map's name when it is to be replaced, and is no map, as it is made by each of these.
TEST_F(ReplaceOnPosix, WhatIsNoOrdinaryFileIsLeftAlone) {
  const fs::path map = maps / "a.galaxy", other = machine.drive_c / "other";
  write_file(other, "old");
  const std::function<void()> makers[] = {
      [&] { fs::create_directory(map); },
      [&] { fs::create_symlink("../other", map); },
      [&] { ASSERT_EQ(::mkfifo(map.c_str(), 0600), 0); },
  };
  for (const auto& make : makers) {
    fs::remove_all(map);
    write_file(map, "old");
    const auto opened = files.open_map("C:\\m\\a.galaxy");
    fs::remove(map);
    make();
    EXPECT_EQ(replace_map(**opened, wanted()).failure().reason,
              "it is not an ordinary file any more");
    EXPECT_EQ(std::distance(fs::directory_iterator(maps), {}), 1);
  }
  EXPECT_EQ(read_file(other), "old");
}
