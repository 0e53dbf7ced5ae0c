// Real trouble with real disks, and the places where the program must not write.
#include "tests/support/process.h"
#include "tests/support/promise.h"
#include "tests/support/real_disk.h"

#include <gtest/gtest.h>

#include <iostream>

#include <grp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr uid_t nobody = 65534;

void become_nobody() {
  if (::setgroups(0, nullptr) != 0 || ::setresgid(nobody, nobody, nobody) != 0 ||
      ::setresuid(nobody, nobody, nobody) != 0)
    ::_exit(126);
}

class RealDisks : public testing::Test {
protected:
  RealDisks() {
    machine.write_data();
    machine.install("vora", {1, 2, 3, 4});
    fs::create_directories(folder);
  }

  TestMachine machine;
  const fs::path folder = machine.user_folder;
};

// A file system of the test's own, that goes with it.
bool mount_small(const fs::path& folder, const char* size) {
  return ::unshare(CLONE_NEWNS) == 0 &&
         ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         ::mount("none", folder.c_str(), "tmpfs", 0, size) == 0;
}

}  // namespace

TEST_F(RealDisks, WhatAUserMayNotDoIsToldAndTheRestIsConverted) {
  if (::geteuid() != 0)
    GTEST_SKIP() << "only root can become another user";
  fs::permissions(machine.prefix.parent_path(), fs::perms(0755));
  const std::string long_name = std::string(248, 'x') + ".galaxy";
  const struct {
    std::string file;
    bool ours;  // the folder and the map are the user's
    mode_t mode;
    const char* reason;  // none: it is converted
  } cases[] = {
      {"readonly/a.galaxy", false, 0644, "Permission denied"},
      {"unreadable/b.galaxy", false, 0600, "Permission denied"},
      {"longname/" + long_name, true, 0644, "File name too long"},
      {"taken/c.galaxy", true, 0644, "a folder has the name c.galold"},
      {"fine/d.galaxy", true, 0640, nullptr},
  };
  for (const auto& c : cases) {
    write_file(folder / c.file, old_map);
    ASSERT_EQ(::chmod((folder / c.file).c_str(), c.mode), 0);
    const uid_t owner = c.ours ? nobody : 0;
    for (const fs::path& path : {(folder / c.file).parent_path(), folder / c.file})
      ASSERT_EQ(::chown(path.c_str(), owner, owner), 0);
  }
  // Where nobody may link to a file that is somebody else's, its backup must be a copy. What the
  // user makes of a stranger's file does nothing in the user's name, nor shows the user's group
  // what was another group's.
  write_file(folder / "nolinks/e.galaxy", old_map);
  ASSERT_EQ(::chmod((folder / "nolinks/e.galaxy").c_str(), 06664), 0);
  ASSERT_EQ(::chown((folder / "nolinks").c_str(), nobody, nobody), 0);
  write_file(folder / "longname" / (std::string(248, 'x') + ".galold"), "older");
  fs::create_directory(folder / "taken/c.galold");
  const auto ended = run_silently(machine, become_nobody);
  EXPECT_EQ(ended.status, 1);
  for (const auto& c : cases) {
    const std::string name = fs::path(c.file).filename().string();
    EXPECT_EQ(read_file(folder / c.file), c.reason ? old_map : converted_map) << name;
    const auto told = ended.said.find(name);
    EXPECT_EQ(told != ended.said.npos, c.reason != nullptr) << ended.said;
    EXPECT_NE(ended.said.find(c.reason ? c.reason : ""), ended.said.npos) << ended.said;
  }
  EXPECT_EQ(tree(folder / "nolinks"), (Tree{{"e.galaxy", converted_map}, {"e.galold", old_map}}));
  struct stat result {
  }, backup{};
  EXPECT_EQ(::stat((folder / "nolinks/e.galaxy").c_str(), &result), 0);
  EXPECT_EQ(result.st_mode & 07777, 0604u);
  EXPECT_EQ(::stat((folder / "nolinks/e.galold").c_str(), &backup), 0);
  if (read_file("/proc/sys/fs/protected_hardlinks") == "1\n")
    EXPECT_EQ(backup.st_uid, nobody) << "it is no copy";
  else
    std::cout << "no copy was needed: anybody may link to anybody's files here\n";
  EXPECT_EQ(tree(folder / "longname").size(), 2u);
}

TEST_F(RealDisks, AFullDiskLosesNothingAndIsFinishedLater) {
  if (::geteuid() != 0 || !mount_small(folder, "size=320k"))
    GTEST_SKIP() << "a file system of its own cannot be mounted here";
  const fs::path maps = folder / "maps";
  const Galaxies galaxies{"v", 40};
  galaxies.fill(maps);
  const auto ended = run_silently(machine);
  EXPECT_EQ(ended.status, 1);
  EXPECT_NE(ended.said.find("No space left on device"), ended.said.npos) << ended.said;
  EXPECT_EQ(broken(galaxies, tree(maps)), "");
  ASSERT_EQ(::mount("none", folder.c_str(), "tmpfs", MS_REMOUNT, "size=4m"), 0);
  EXPECT_EQ(run_silently(machine).said, "");
  EXPECT_EQ(unfinished(galaxies, tree(maps)), "");
  EXPECT_EQ(::umount(folder.c_str()), 0);
}

TEST_F(RealDisks, BackupsAreCopiedWhereThereAreNoHardLinks) {
  for (const char* kind : {"vfat", "exfat"}) {
    const RealDisk disk(kind, folder);
    if (!disk)
      continue;
    const Galaxies galaxies{"v", 40};
    galaxies.fill(folder / "maps");
    EXPECT_EQ(run_silently(machine).said, "");
    EXPECT_EQ(unfinished(galaxies, tree(folder / "maps")), "");
    return;
  }
  GTEST_SKIP() << "no file system without hard links can be made and mounted here";
}

struct Mode {
  const char* edition;
  bool debug;
};

class Elsewhere : public testing::TestWithParam<Mode> {
protected:
  // In debug mode the expansion searches the whole drive of the current folder, so this must not be
  // the one that holds everything.
  Elsewhere() {
    machine.data = machine.drive_c / "data";
    machine.write_data();
    if (mode.debug)
      write_file(machine.data / "targetvoraver.txt", "\r\n\r\n\r\n\r\n\r\n\r\ndebug\r\n");
    machine.install(is_base ? "vora" : "voratarnfall",
                    is_base ? VersionParts{1, 2, 3, 4} : VersionParts{5, 6, 7, 8});
    write_file(elsewhere / "victim", old_map);
    write_file(elsewhere / "outside.galaxy", old_map);
    fs::create_symlink(elsewhere / "victim", machine.data / "info.txt");
  }

  // Two maps of such a version, with links to elsewhere wherever the program may want to write.
  void makemaps(const std::string& version) {
    fs::remove_all(folder);
    map = std::string(old_map) + "..\\..\\outside.galaxy\r\n";
    map.replace(map.find(" 3"), 2, version);
    for (const char* name : {"a", "x.."}) {
      write_file(folder / (std::string(name) + ".galaxy"), map);
      for (const char* ending : {".galold", ".galfix", ".galtst"})
        fs::create_symlink(elsewhere / "victim", folder / (std::string(name) + ending));
    }
    fs::create_symlink(elsewhere / "victim", folder / ".vora-map-updater-5.tmp");
    fs::create_symlink(elsewhere / "outside.galaxy", folder / "b.galaxy");
    fs::create_directory_symlink(elsewhere, folder / "linked");
  }

  // What becomes of them. Where the version has no templates, the first map ends the run; it gets
  // its backup all the same, but for debug mode.
  Tree made(Tree left, bool converts) const {
    const std::string rest = map.substr(std::string(old_map).size());
    // In debug mode the fix pass takes the map itself, in which it recognises nothing.
    const std::string result = is_base ? converted_map + rest : mode.debug ? map : fixed_map + rest;
    for (const std::string name : {"a", "x.."}) {
      if (mode.debug && converts)
        left[name + ".galtst"] = result;
      if (mode.debug || (name != "a" && !converts))
        continue;
      left[name + ".galold2"] = std::exchange(left[name + ".galold"], map);
      if (converts)
        left[name + ".galaxy"] = result;
      if (converts && !is_base)
        left[name + ".galfix"] = converted_map + rest;
    }
    return left;
  }

  const Mode mode = GetParam();
  const bool is_base = mode.edition == std::string("v");
  TestMachine machine;
  const fs::path folder = (is_base ? machine.user_folder : machine.expansion_folder) / "maps";
  const fs::path elsewhere = machine.prefix.parent_path() / "elsewhere";
  std::string map;
};

INSTANTIATE_TEST_SUITE_P(Modes, Elsewhere,
                         testing::Values(Mode{"v", false}, Mode{"v", true}, Mode{"t", false},
                                         Mode{"t", true}));

// Neither a map's content nor what lies beside it leads the program out of the map's folder.
TEST_P(Elsewhere, IsNothingWritten) {
  const Tree before = tree(elsewhere);
  for (const std::string version : {" 3", "..", "\\a", "/a", "C:", "*?", "\x01\x02", " "}) {
    SCOPED_TRACE(version);
    makemaps(version);
    const Tree machine_before = tree(machine.drive_c);
    const Tree expected = made(tree(folder), version == " 3");
    const auto ended = run_silently(machine);

    EXPECT_EQ(tree(elsewhere), before);
    Tree machine_after = tree(machine.drive_c);
    std::erase_if(machine_after,
                  [&](const auto& file) { return file.first.find("/maps/") != std::string::npos; });
    for (const auto& [name, content] : machine_after)
      EXPECT_TRUE(machine_before.contains(name) && machine_before.at(name) == content) << name;

    EXPECT_EQ(ended.status, version == " 3" ? 0 : 1) << ended.said;
    EXPECT_EQ(tree(folder), expected) << ended.said;
  }
}
