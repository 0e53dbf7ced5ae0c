// How a map gives way to its converted self.
#include "platform/replacing.h"

#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace fs = std::filesystem;

using Tree = std::map<std::string, std::string>;

namespace {

// A folder in which one step fails, alone or with all that follow it, as if the run ended there.
class FailingFolder : public MapFolder {
public:
  FailingFolder(std::unique_ptr<MapFolder> real, int fault_in, bool and_the_rest, bool knows_links)
      : MapFolder(real->map_name), folder(std::move(real)), fault(fault_in), lasting(and_the_rest),
        links(knows_links) {}

  bool failed = false;

  std::string spelled(const std::string& name) override { return folder->spelled(name); }
  Answer<Kind> kind_of(const std::string& name) override {
    return attempt([&] { return folder->kind_of(name); });
  }
  Answer<Stamp> stamp_of(const std::string& name) override {
    return attempt([&] { return folder->stamp_of(name); });
  }
  Answer<std::optional<Stamp>> lock() override {
    return attempt([&] { return folder->lock(); });
  }
  Answer<bool> holds(const std::string& name, std::string_view text) override {
    return attempt([&] { return folder->holds(name, text); });
  }
  Answer<Done> flush(const std::string& name) override {
    return attempt([&] { return folder->flush(name); });
  }
  Answer<std::string> write_temporary(std::string_view text) override {
    return attempt([&] { return folder->write_temporary(text); });
  }
  void remove(const std::string& name) override {
    if (!fails())
      folder->remove(name);
  }
  Answer<Done> rename(const std::string& from, const std::string& to,
                      const std::string& kept) override {
    return attempt([&] { return folder->rename(from, to, kept); });
  }
  Answer<bool> rename_no_replace(const std::string& from, const std::string& to) override {
    return attempt([&] { return folder->rename_no_replace(from, to); });
  }
  Answer<bool> link(const std::string& from, const std::string& to) override {
    return attempt([&] { return links ? folder->link(from, to) : Answer<bool>(false); });
  }

private:
  bool fails() {
    ++step;
    const bool now = lasting ? step >= fault : step == fault;
    failed = failed || now;
    return now;
  }
  template <class Step> auto attempt(const Step& real) -> decltype(real()) {
    return fails() ? decltype(real())(Reason{"it fails"}) : real();
  }

  const std::unique_ptr<MapFolder> folder;
  const int fault;
  const bool lasting, links;
  int step = 0;
};

class Replace : public testing::Test {
protected:
  Replace() { write_file(maps / "a.galaxy", "old"); }

  static Replacement wanted(std::string_view was, bool with_fix) {
    std::vector<NewFile> put;
    if (with_fix)
      put.push_back({"C:\\m\\a.galfix", "fix"});
    put.push_back({"C:\\m\\a.galaxy", "new"});
    return {"C:\\m\\a.galaxy", was, put, "C:\\m\\a.galold"};
  }

  Result<Done> replace(std::string_view was = "old", bool with_fix = false) {
    return replace_map(*files, wanted(was, with_fix));
  }

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
    const std::string path = "C:\\other\\" + name;
    return replace_map(*files, {path + "axy", "old", {{path + "axy", "new"}}, path + "old"});
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
    FailingFolder folder(machine.map_folder(maps / "a.galaxy"), step, lasting, links);
    const auto done = Replacing(folder, replacement).run();
    EXPECT_EQ(bool(done), !folder.failed);
    EXPECT_TRUE(bool(done) || done.failure().reason == "it fails");
    return folder.failed;
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
          EXPECT_TRUE(lasting || !MapFolder::is_temporary(name)) << name;
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
  auto other = machine.map_folder(maps / "a.galaxy");
  ASSERT_TRUE(bool(*other->lock()));
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
  auto living = machine.map_folder(maps / "a.galaxy");
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
