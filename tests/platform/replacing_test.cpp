// How a map is replaced by its converted self.
#include "platform/replacing.h"

#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

class Replace : public testing::Test {
protected:
  Replace() { write_file(maps / "a.galaxy", "old"); }

  Result<Done> replace(std::string_view was = "old", bool with_fix = false) {
    Replacement replacement{std::string(was), {}, "new", "a.galold"};
    if (with_fix)
      replacement.companions.push_back({"a.galfix", "fix"});
    return replace_map(*files, "C:\\m\\a.galaxy", replacement);
  }

  std::unique_ptr<OpenMap> opened() { return *files->open_map("C:\\m\\a.galaxy"); }

  TestMachine machine;
  const fs::path maps = machine.drive_c / "m";
  const std::unique_ptr<Files> files = machine.files();
};

}  // namespace

TEST_F(Replace, NumbersTheBackupsThatAreInItsWay) {
  write_file(maps / "A.GALOLD", "1st");
  write_file(maps / "a.galold2", "second");
  write_file(maps / "a.galold3", "third");
  EXPECT_TRUE(bool(replace()));
  EXPECT_EQ(tree(maps), (Tree{{"a.galaxy", "new"},
                              {"a.galold", "old"},
                              {"A.GALOLD4", "1st"},
                              {"a.galold2", "second"},
                              {"a.galold3", "third"}}));
}

TEST_F(Replace, ABackupWithTheSameContentOrNoneIsReplaced) {
  for (const char* older : {"old", ""}) {
    write_file(maps / "a.galaxy", "old");
    write_file(maps / "A.galold", older);
    EXPECT_TRUE(bool(replace()));
    EXPECT_EQ(tree(maps), (Tree{{"a.galaxy", "new"}, {"A.galold", "old"}}));
  }

  // As a run leaves it that was killed between the backup and the map.
  fs::remove_all(maps);
  write_file(maps / "a.galaxy", "old");
  fs::create_hard_link(maps / "a.galaxy", maps / "a.galold");
  EXPECT_TRUE(bool(replace()));
  EXPECT_EQ(tree(maps), (Tree{{"a.galaxy", "new"}, {"a.galold", "old"}}));
}

TEST_F(Replace, LeavesAloneWhatIsNotTheMapThatWasRead) {
  const Tree before = tree(maps);
  for (const char* was : {"other", "ol"})
    EXPECT_EQ(replace(was, true).failure().reason, "it has changed since it was read");
  EXPECT_EQ(tree(maps), before);

  fs::remove(maps / "a.galaxy");
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

TEST_F(Replace, ABatchIsBounded) {
  ReplacementBatch batch(*files);
  constexpr std::size_t most_bytes = 16 << 20;
  EXPECT_TRUE(batch.has_room(2 * most_bytes));  // which has a batch of its own
  for (int i = 0; i < 64; ++i) {
    EXPECT_TRUE(batch.has_room(most_bytes - 64 * 3)) << i;
    const std::string map = "map" + std::to_string(i) + ".galaxy";
    write_file(maps / map, "old");
    ASSERT_TRUE(
        bool(batch.add(*files->open_map("C:\\m\\" + map), {"old", {}, "new", map + "old"})));
    EXPECT_FALSE(batch.has_room(most_bytes));
  }
  EXPECT_FALSE(batch.has_room(0));
}

TEST_F(Replace, TwoRunsKeepApart) {
  auto other = opened();
  ASSERT_TRUE(bool(other->lock()));
  const Tree before = tree(maps);
  EXPECT_EQ(replace().failure().reason, "another program has locked it");
  EXPECT_EQ(tree(maps), before);
  other.reset();
  EXPECT_TRUE(bool(replace()));
}

TEST_F(Replace, ListingClearsWhatAKilledRunLeftAndNothingElse) {
  const char* const strangers[] = {".vora-map-updater-.tmp", ".vora-map-updater-1x.tmp",
                                   ".vora-map-updater-1.tmp2", "vora-map-updater-1.tmp"};
  for (const char* name : strangers)
    write_file(maps / name, "x");
  fs::create_directory(maps / ".vora-map-updater-2.tmp");
  if (!machine.prefix.empty())  // under Wine there are no links to be made
    fs::create_symlink("a.galaxy", maps / ".vora-map-updater-3.tmp");
  const std::size_t theirs = tree(maps).size();
  auto living = opened();
  ASSERT_TRUE(bool(living->lock()) && bool(living->write_temporary("x")));
  const Tree kept = tree(maps);
  for (const char* name : {".vora-map-updater-17.tmp", ".vora-map-updater-0.tmp"})
    write_file(maps / name, "x");
  EXPECT_TRUE(bool(files->list("C:\\m", "*")));
  EXPECT_EQ(tree(maps), kept);
  EXPECT_TRUE(fs::is_directory(maps / ".vora-map-updater-2.tmp"));
  living.reset();
  EXPECT_TRUE(bool(files->list("C:\\m", "*")));
  EXPECT_EQ(tree(maps).size(), theirs);
}
