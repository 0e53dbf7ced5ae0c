// How a map is replaced by its converted self.
#include "platform/replacing.h"

#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace fs = std::filesystem;

using Tree = std::map<std::string, std::string>;

namespace {

// A map of which one step fails, alone or with all that follow it, as if the run ended there.
class FailingMap : public OpenMap {
public:
  FailingMap(std::unique_ptr<OpenMap> real, int fault_in, bool and_the_rest, bool knows_links)
      : OpenMap(real->path, real->name, real->text), map(std::move(real)), fault(fault_in),
        lasting(and_the_rest), links(knows_links) {}

  bool failed = false;

  std::string spelled(const std::string& entry) override { return map->spelled(entry); }
  Result<Kind> kind_of(const std::string& entry) override {
    return attempt([&] { return map->kind_of(entry); });
  }
  Result<Stamp> stamp_of(const std::string& entry) override {
    return attempt([&] { return map->stamp_of(entry); });
  }
  Result<Stamp> lock() override {
    return attempt([&] { return map->lock(); });
  }
  Result<bool> holds(const std::string& entry, std::string_view content) override {
    return attempt([&] { return map->holds(entry, content); });
  }
  Result<Done> flush(const std::string& entry) override {
    return attempt([&] { return map->flush(entry); });
  }
  Result<std::string> write_temporary(std::string_view content) override {
    return attempt([&] { return map->write_temporary(content); });
  }
  void remove(const std::string& entry) override {
    if (!fails())
      map->remove(entry);
  }
  Result<Done> rename(const std::string& from, const std::string& to,
                      const std::string& kept) override {
    return attempt([&] { return map->rename(from, to, kept); });
  }
  Result<bool> rename_no_replace(const std::string& from, const std::string& to) override {
    return attempt([&] { return map->rename_no_replace(from, to); });
  }
  Result<bool> link(const std::string& from, const std::string& to) override {
    return attempt([&] { return links ? map->link(from, to) : Result<bool>(false); });
  }

private:
  bool fails() {
    ++step;
    const bool now = lasting ? step >= fault : step == fault;
    failed = failed || now;
    return now;
  }
  template <class Step> auto attempt(const Step& real) -> decltype(real()) {
    return fails() ? decltype(real())(failure("it fails")) : real();
  }

  const std::unique_ptr<OpenMap> map;
  const int fault;
  const bool lasting, links;
  int step = 0;
};

class Replace : public testing::Test {
protected:
  Replace() { write_file(maps / "a.galaxy", "old"); }

  static Replacement wanted(std::string_view was, bool with_fix) {
    Replacement replacement{was, {}, "new", "a.galold"};
    if (with_fix)
      replacement.companions.push_back({"a.galfix", "fix"});
    return replacement;
  }

  Result<Done> replace(std::string_view was = "old", bool with_fix = false) {
    return open_and_replace(*files, "C:\\m\\a.galaxy", wanted(was, with_fix));
  }

  std::unique_ptr<OpenMap> opened() { return *files->open_map("C:\\m\\a.galaxy"); }

  TestMachine machine;
  const fs::path maps = machine.drive_c / "m";
  const std::unique_ptr<Files> files = machine.files();
};

}  // namespace

TEST_F(Replace, LeavesTheBackupAndNothingElse) {
  EXPECT_TRUE(bool(replace("old", true)));
  EXPECT_EQ(tree(maps), (Tree{{"a.galaxy", "new"}, {"a.galold", "old"}, {"a.galfix", "fix"}}));
}

TEST_F(Replace, NumbersTheBackupsThatAreInItsWay) {
  write_file(maps / "A.GALOLD", "first");
  write_file(maps / "a.galold2", "second");
  write_file(maps / "a.galold3", "third");
  EXPECT_TRUE(bool(replace()));
  EXPECT_EQ(tree(maps), (Tree{{"a.galaxy", "new"},
                              {"a.galold", "old"},
                              {"A.GALOLD4", "first"},
                              {"a.galold2", "second"},
                              {"a.galold3", "third"}}));
}

TEST_F(Replace, ABackupWithTheSameContentStays) {
  write_file(maps / "A.galold", "old");
  EXPECT_TRUE(bool(replace()));
  EXPECT_EQ(tree(maps), (Tree{{"a.galaxy", "new"}, {"A.galold", "old"}}));

  // As a run leaves it that was killed between the backup and the map.
  fs::remove_all(maps);
  write_file(maps / "a.galaxy", "old");
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
  const fs::path other = machine.drive_c / "other";
  for (const char* name : {"a.galaxy", "a.galold", "b.galaxy"})
    write_file(other / name, "old");
  fs::create_directory(other / "B.GALOLD");
  const auto put = [&](const std::string& name) {
    return open_and_replace(*files, "C:\\other\\" + name + "axy", {"old", {}, "new", name + "old"});
  };
  EXPECT_TRUE(bool(put("a.gal")));
  EXPECT_FALSE(bool(put("b.gal")));
  EXPECT_TRUE(fs::is_directory(other / "B.GALOLD"));
}

// What is known of a folder must not outlive changes that others make in it.
TEST_F(Replace, SeesBackupsThatOthersMakeMeanwhile) {
  EXPECT_TRUE(bool(replace()));
  write_file(maps / "a.galaxy", "old2");
  fs::remove(maps / "a.galold");
  write_file(maps / "A.GALOLD", "old");
  // Time stamps are no finer than the clock ticks of the system.
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  write_file(maps / "touch", "");
  EXPECT_TRUE(bool(replace("old2")));
  EXPECT_EQ(tree(maps),
            (Tree{{"a.galaxy", "new"}, {"a.galold", "old2"}, {"A.GALOLD2", "old"}, {"touch", ""}}));
}

TEST_F(Replace, KeepsThePromiseWhicheverStepFails) {
  const Tree before = {{"a.galaxy", "old"}, {"A.GALOLD", "first"}, {"b.galaxy", "other"}};
  const Tree finished = {{"a.galaxy", "new"},
                         {"a.galfix", "fix"},
                         {"a.galold", "old"},
                         {"A.GALOLD2", "first"},
                         {"b.galaxy", "other"}};
  const Replacement replacement = wanted("old", true);
  const auto fails_at = [&](int step, bool lasting, bool links) {
    fs::remove_all(maps);
    for (const auto& [name, text] : before)
      write_file(maps / name, text);
    FailingMap map(opened(), step, lasting, links);
    const auto done = replace_map(map, replacement);
    EXPECT_EQ(bool(done), !map.failed);
    EXPECT_TRUE(bool(done) || done.failure().reason == "it fails");
    return map.failed;
  };
  for (const bool lasting : {false, true}) {
    for (const bool links : {false, true}) {
      int step = 1;
      for (; fails_at(step, lasting, links); ++step) {
        SCOPED_TRACE(step);
        Tree left = tree(maps);
        EXPECT_EQ(left["a.galaxy"], "old");
        EXPECT_EQ(left["b.galaxy"], "other");
        EXPECT_TRUE(left["A.GALOLD"] == "first" || left["A.GALOLD2"] == "first");
        for (const auto& [name, text] : left)
          EXPECT_TRUE(lasting || !OpenMap::is_temporary(name)) << name;
        EXPECT_TRUE(bool(files->list("C:\\m", "*")));
        EXPECT_TRUE(bool(replace("old", true)));
        EXPECT_EQ(tree(maps), finished);
      }
      EXPECT_GT(step, 8);
      EXPECT_EQ(tree(maps), finished);
    }
  }
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
