// How a map gives way to its converted self.
#include "tests/support/testmachine.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace fs = std::filesystem;

using Tree = std::map<std::string, std::string>;

namespace {

class Replace : public testing::Test {
protected:
  Replace() { writefile(maps / "a.galaxy", "old"); }

  Result<Done> replace(std::string_view was = "old", bool withfix = false) {
    std::vector<NewFile> put;
    if (withfix)
      put.push_back({"C:\\m\\a.galfix", "fix"});
    put.push_back({"C:\\m\\a.galaxy", "new"});
    return files->replace({"C:\\m\\a.galaxy", was, put, "C:\\m\\a.galold"});
  }

  TestMachine machine;
  const fs::path maps = machine.drivec / "m";
  const std::unique_ptr<Files> files = machine.files();
};

}  // namespace

TEST_F(Replace, LeavesTheBackupAndNothingElse) {
  EXPECT_TRUE(bool(replace("old", true)));
  EXPECT_EQ(tree(maps), (Tree{{"a.galaxy", "new"}, {"a.galold", "old"}, {"a.galfix", "fix"}}));
}

TEST_F(Replace, NumbersTheBackupsThatAreInItsWay) {
  writefile(maps / "A.GALOLD", "first");
  writefile(maps / "a.galold2", "second");
  writefile(maps / "a.galold3", "third");
  EXPECT_TRUE(bool(replace()));
  EXPECT_EQ(tree(maps), (Tree{{"a.galaxy", "new"},
                              {"a.galold", "old"},
                              {"A.GALOLD4", "first"},
                              {"a.galold2", "second"},
                              {"a.galold3", "third"}}));
}

TEST_F(Replace, ABackupWithTheSameContentStays) {
  writefile(maps / "A.galold", "old");
  EXPECT_TRUE(bool(replace()));
  EXPECT_EQ(tree(maps), (Tree{{"a.galaxy", "new"}, {"A.galold", "old"}}));

  // As a run leaves it that was killed between the backup and the map.
  fs::remove_all(maps);
  writefile(maps / "a.galaxy", "old");
  fs::create_hard_link(maps / "a.galaxy", maps / "a.galold");
  EXPECT_TRUE(bool(replace()));
  EXPECT_EQ(tree(maps), (Tree{{"a.galaxy", "new"}, {"a.galold", "old"}}));
}

TEST_F(Replace, LeavesAloneWhatIsNotTheMapThatWasRead) {
  const Tree before = tree(maps);
  EXPECT_EQ(replace("other").failure().reason, "it has changed since it was read");
  EXPECT_EQ(replace("ol").failure().reason, "it has changed since it was read");
  EXPECT_EQ(tree(maps), before);

  fs::remove(maps / "a.galaxy");
  EXPECT_FALSE(bool(replace()));
  fs::remove_all(maps);
  EXPECT_FALSE(bool(replace()));
}

TEST_F(Replace, AFolderInACompanionsPlaceLeavesNothingHalfDone) {
  for (const char* name : {"a.GALOLD", "a.galfix"}) {
    fs::create_directory(maps / name);
    const Tree before = tree(maps);
    const auto done = replace("old", true);
    ASSERT_FALSE(bool(done));
    EXPECT_EQ(done.failure().path, "C:\\m\\a.galaxy");
    EXPECT_TRUE(done.failure().reason.starts_with("a folder has the name a.gal"));
    EXPECT_EQ(tree(maps), before);
    fs::remove(maps / name);
  }
}

// What is known of one folder must not be taken for what is known of the next.
TEST_F(Replace, SeesEachFolderAsItIs) {
  EXPECT_TRUE(bool(replace()));
  const fs::path other = machine.drivec / "other";
  for (const char* name : {"a.galaxy", "a.galold", "b.galaxy"})
    writefile(other / name, "old");
  fs::create_directory(other / "B.GALOLD");
  const auto put = [&](const std::string& name) {
    const std::string path = "C:\\other\\" + name;
    return files->replace({path + "axy", "old", {{path + "axy", "new"}}, path + "old"});
  };
  EXPECT_TRUE(bool(put("a.gal")));
  EXPECT_FALSE(bool(put("b.gal")));
  EXPECT_TRUE(fs::is_directory(other / "B.GALOLD"));
}

// What is known of a folder must not outlive changes that others make in it.
TEST_F(Replace, SeesBackupsThatOthersMakeMeanwhile) {
  EXPECT_TRUE(bool(replace()));
  writefile(maps / "a.galaxy", "old2");
  fs::remove(maps / "a.galold");
  writefile(maps / "A.GALOLD", "old");
  // Time stamps are no finer than the clock ticks of the system.
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  writefile(maps / "touch", "");
  EXPECT_TRUE(bool(replace("old2")));
  EXPECT_EQ(tree(maps),
            (Tree{{"a.galaxy", "new"}, {"a.galold", "old2"}, {"A.GALOLD2", "old"}, {"touch", ""}}));
}
