// What only a POSIX system has of a map: permissions, an owner and links.
#include "platform/prefix/prefix_files.h"

#include "tests/support/prefix/machine_of.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <functional>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::atomic<bool> interrupts_fsync = false;  // the next one

// Looks at files whose permissions are about to be set, or fails to set them; links another file
// than the map; and whatever else its members say.
class OddDisk : public Disk {
public:
  int open(int folder, const char* name, int flags, unsigned mode) override {
    return interrupts() ? -1 : Disk::open(folder, name, flags, mode);
  }
  ssize_t write(int file, const char* from, std::size_t size) override {
    return writes_nothing ? 0 : interrupts() ? -1 : Disk::write(file, from, size);
  }
  void flush(std::span<const int> files, std::span<int> errors) override {
    if (at_flush)
      at_flush();
    interrupts_fsync = interrupted;
    Disk::flush(files, errors);
  }
  int status(int folder, const char* name, int flags, struct stat& status) override {
    const int done = Disk::status(folder, name, flags, status);
    if (own_numbers && done == 0 && std::string(name).ends_with("old"))
      ++status.st_ino;
    return done;
  }
  int rename(int folder, const char* from, const char* to, unsigned flags) override {
    errno = EIO;
    return to == unnamable || interrupts() ? -1 : Disk::rename(folder, from, to, flags);
  }
  int link(int folder, const char* from, const char* to) override {
    errno = link_error;
    return link_error ? -1 : Disk::link(folder, linked.empty() ? from : linked.c_str(), to);
  }
  int lock(int file) override {
    errno = lock_error;
    return lock_error ? -1 : Disk::lock(file);
  }
  int copy_acl(int from, int to) override { return acl_fails ? -1 : Disk::copy_acl(from, to); }
  int change_mode(int file, mode_t mode) override {
    struct stat status{};
    ::fstat(file, &status);
    EXPECT_TRUE(status.st_mode & S_IRUSR);
    ++permitted;
    errno = error;
    return error ? -1 : Disk::change_mode(file, mode);
  }

  std::string linked;           // instead of the map
  std::string unnamable;        // what no file can be renamed to
  bool writes_nothing = false;  // and reports no failure
  bool interrupted = false;     // every other call, by a signal
  bool acl_fails = false;       // copying it
  bool own_numbers = false;     // a backup has another file number than the map that it links to
  std::function<void()> at_flush;
  int link_error = 0, lock_error = 0;
  int permitted = 0;
  int error = 0;

private:
  bool interrupts() {
    odd = interrupted && !odd;
    if (odd)
      errno = EINTR;
    return odd;
  }

  bool odd = false;
};

ino_t inode(const fs::path& file) {
  struct stat status{};
  return ::stat(file.c_str(), &status) == 0 ? status.st_ino : 0;
}

class ReplaceOnPosix : public testing::Test {
protected:
  ReplaceOnPosix() {
    std::signal(SIGIO, SIG_IGN);
    write_file(maps / "a.galaxy", "old");
  }

  static Replacement wanted() { return {"old", {{"a.galfix", "fix"}}, "new", "a.galold"}; }
  Result<Done> replace() { return replace_map(files, "C:\\m\\a.galaxy", wanted()); }

  Tree replaced() const { return {{"a.galaxy", "new"}, {"a.galfix", "fix"}, {"a.galold", "old"}}; }

  TestMachine machine;
  const fs::path maps = machine.drive_c / "m";
  OddDisk disk;
  PrefixFiles files{machine_of(machine), disk};
};

}  // namespace

// In the place of the C library's; any thread may call it.
int fsync(int file) {
  errno = EINTR;
  return interrupts_fsync.exchange(false) ? -1 : static_cast<int>(::syscall(SYS_fsync, file));
}

// Until it takes its name a new file can be opened by its owner, who may have to clear it up. What
// the group may do is known only with the access control list.
TEST_F(ReplaceOnPosix, KeepsPermissionsAndOwner) {
  const bool root = ::geteuid() == 0;
  for (const auto& [mode, acl_fails] :
       {std::pair<mode_t, bool>(0440, false), {0400, false}, {06750, false}, {06750, true}}) {
    disk.acl_fails = acl_fails;
    const mode_t shown = mode & (acl_fails ? 0707 : 0777);
    write_file(maps / "a.galaxy", "old");
    ASSERT_TRUE(!root || ::chown((maps / "a.galaxy").c_str(), 1234, 1234) == 0);
    ::chmod((maps / "a.galaxy").c_str(), mode);
    EXPECT_TRUE(bool(replace()));
    for (const char* name : {"a.galaxy", "a.galold", "a.galfix"}) {
      struct stat status;
      ASSERT_EQ(::stat((maps / name).c_str(), &status), 0);
      EXPECT_EQ(status.st_mode & 07777, name[5] == 'o' ? mode : shown) << name;
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

// Whatever else has the map open then writes to the backup. Whether an older backup ever reached
// the disk, nobody knows.
TEST_F(ReplaceOnPosix, TheMapsOwnFileOrACopyBecomesTheBackup) {
  for (const std::string before : {"none", "equal", "linked"})
    for (const bool copied : {false, true}) {
      fs::remove_all(maps);
      write_file(maps / "a.galaxy", "old");
      if (before == "equal")
        write_file(maps / "a.galold", "old");
      if (before == "linked")
        fs::create_hard_link(maps / "a.galaxy", maps / "a.galold");
      const ino_t map = inode(maps / "a.galaxy"), older = inode(maps / "a.galold");
      disk.link_error = copied ? EPERM : 0;
      EXPECT_TRUE(bool(replace())) << before;
      EXPECT_EQ(tree(maps), replaced()) << before;
      EXPECT_EQ(inode(maps / "a.galold") == map, !copied || before == "linked") << before;
      EXPECT_TRUE(before != "equal" || inode(maps / "a.galold") != older);
    }
}

TEST_F(ReplaceOnPosix, AMapThatIsOpenForWritingIsSkippedAndALaterWriterWaits) {
  const std::string path = maps / "a.galaxy";
  {
    const Descriptor writer = open_path(system_disk(), path, O_WRONLY);
    EXPECT_EQ(replace().failure().reason, "another program has it open");
  }
  auto opened = files.open_map("C:\\m\\a.galaxy");
  ASSERT_TRUE(bool((*opened)->lock()));
  EXPECT_FALSE(open_path(system_disk(), path, O_WRONLY | O_NONBLOCK));
  EXPECT_EQ(errno, EWOULDBLOCK);
  EXPECT_TRUE(open_path(system_disk(), path, O_RDONLY));
  opened->reset();
  EXPECT_TRUE(open_path(system_disk(), path, O_WRONLY | O_NONBLOCK));
}

// The command that gets maps back would put it over a later map. Without a lock another run may
// have converted the map, so that the backup is all that is left of it.
TEST_F(ReplaceOnPosix, AFailureRemovesTheBackupThatWasMade) {
  disk.unnamable = "a.galaxy";
  Tree kept = {{"a.galaxy", "old"}, {"a.galfix", "fix"}};
  for (const bool copied : {false, true}) {
    disk.link_error = copied ? EPERM : 0;
    EXPECT_FALSE(bool(replace()));
    EXPECT_EQ(tree(maps), kept) << copied;
  }
  kept["a.galold"] = "old";
  for (const bool copied : {false, true}) {
    fs::remove(maps / "a.galold");
    disk.link_error = copied ? EPERM : 0;
    disk.lock_error = ENOLCK;
    const auto unlocked = replace();
    EXPECT_TRUE(unlocked.failure().reason.ends_with("; its backup a.galold stays, since the map "
                                                    "cannot be locked"));
    EXPECT_EQ(tree(maps), kept) << copied;
  }
}

// What another program has saved is not to be replaced by the command that gets maps back: so a
// backup that stays is named.
TEST_F(ReplaceOnPosix, AFailureNamesTheBackupThatStays) {
  const auto save_as = [&](const std::string& name) {
    write_file(machine.drive_c / "theirs", "theirs");
    fs::rename(machine.drive_c / "theirs", maps / name);
  };
  for (const auto& [name, reason] :
       {std::pair("a.galaxy", "it has changed since it was read; its backup a.galold stays, since "
                              "another file may have the map's name"),
        std::pair("a.galold", "its backup a.galold has changed; its backup a.galold stays, since "
                              "it may be another program's")}) {
    fs::remove_all(maps);
    write_file(maps / "a.galaxy", "old");
    disk.at_flush = [&] {
      if (fs::exists(maps / "a.galold"))
        save_as(name);
    };
    EXPECT_EQ(replace().failure().reason, reason);
    EXPECT_EQ(read_file(maps / name), "theirs");
    EXPECT_TRUE(fs::exists(maps / "a.galold"));
  }
}

// Without a lock it may be what another run has just taken.
TEST_F(ReplaceOnPosix, ANumberedBackupThatAKillLeftEmptyIsReplaced) {
  for (const bool locked : {true, false}) {
    fs::remove_all(maps);
    write_file(maps / "a.galaxy", "old");
    write_file(maps / "a.galold", "older");
    write_file(maps / "a.galold2", "");
    disk.lock_error = locked ? 0 : ENOLCK;
    EXPECT_TRUE(bool(replace()));
    Tree left = replaced();
    left["a.galold2"] = locked ? "older" : "";
    if (!locked)
      left["a.galold3"] = "older";
    EXPECT_EQ(tree(maps), left);
  }
}

TEST_F(ReplaceOnPosix, GoesOnOnOddDisks) {
  for (bool OddDisk::* const odd : {&OddDisk::own_numbers, &OddDisk::interrupted}) {
    fs::remove_all(maps);
    write_file(maps / "a.galaxy", "old");
    disk.*odd = true;
    const auto done = replace();
    EXPECT_TRUE(bool(done)) << done.failure().text();
    EXPECT_EQ(tree(maps), replaced());
    disk.*odd = false;
  }
  write_file(maps / "a.galaxy", "old");
  disk.writes_nothing = true;
  EXPECT_FALSE(bool(replace()));
}

// An access control list that lets user 1 read: the version, then each entry's tag, permissions and
// user. The map's mode shows the list's mask as the group's permissions. What its folder gives to
// new files is not for a map that had no list.
TEST_F(ReplaceOnPosix, KeepsTheAccessControlList) {
  constexpr std::uint32_t anybody = ~0u;
  std::string list("\2\0\0\0", 4);
  const auto add = [&](std::uint16_t tag, std::uint16_t permissions, std::uint32_t user) {
    list.append(reinterpret_cast<const char*>(&tag), sizeof tag);
    list.append(reinterpret_cast<const char*>(&permissions), sizeof permissions);
    list.append(reinterpret_cast<const char*>(&user), sizeof user);
  };
  add(0x01, 6, anybody);
  add(0x02, 4, 1);
  add(0x04, 0, anybody);
  add(0x10, 4, anybody);
  add(0x20, 0, anybody);
  const std::string map = maps / "a.galaxy";
  const auto set = [&](const std::string& file, const char* kind) {
    return ::setxattr(file.c_str(), kind, list.data(), list.size(), 0) == 0;
  };
  constexpr char own[] = "system.posix_acl_access", given[] = "system.posix_acl_default";
  if (!set(maps, given))
    GTEST_SKIP() << "this file system has no access control lists";
  std::string kept(list.size(), ' ');
  EXPECT_TRUE(bool(replace()));
  EXPECT_EQ(::getxattr(map.c_str(), own, kept.data(), kept.size()), -1);
  ::removexattr(maps.c_str(), given);
  write_file(map, "old");
  EXPECT_TRUE(set(map, own));
  EXPECT_TRUE(bool(replace()));
  EXPECT_EQ(::getxattr(map.c_str(), own, kept.data(), kept.size()),
            static_cast<ssize_t>(list.size()));
  EXPECT_EQ(kept, list);
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
    auto opened = files.open_map("C:\\m\\a.galaxy");
    fs::remove(map);
    make();
    EXPECT_EQ(replace_map(files, *std::move(opened), wanted()).failure().reason,
              "it is not an ordinary file any more");
    EXPECT_EQ(std::distance(fs::directory_iterator(maps), {}), 1);
  }
  EXPECT_EQ(read_file(other), "old");
}
