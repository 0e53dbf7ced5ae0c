// How a map gives way to its converted self on Windows.
#include "platform/replacing.h"

#include "platform/windows/windows_files.h"
#include "platform/windows/windows_map.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>

#include <numeric>

using Tree = std::map<std::string, std::string>;

namespace {

class Replace : public testing::Test {
protected:
  Replace() { scratch.add("a.galaxy", "old"); }

  static Replacement wanted() { return {"old", {{"a.galfix", "fix"}}, "new", "a.galold"}; }

  Result<Done> replace() {
    const auto map = files.open_map(scratch / "a.galaxy");
    return map ? replace_map(**map, wanted()) : map.failure();
  }

  // Holds a file as a virus scanner does, sharing nothing or reading alone.
  Handle hold(const char* name, DWORD share) const {
    Handle holder(CreateFileW(system_path(scratch / name).c_str(), GENERIC_READ, share, nullptr,
                              OPEN_EXISTING, 0, nullptr));
    EXPECT_TRUE(bool(holder));
    return holder;
  }

  // Replaces the map; `waiting` is called instead of each wait, which `waits` counts.
  Result<Done> replace_waiting(const std::function<void()>& waiting) {
    waits.clear();
    WindowsMap map(scratch / "a.galaxy", system_path(scratch.path).wstring(), "a.galaxy", "old",
                   RetryBudget([&](DWORD milliseconds) {
                     waits.push_back(milliseconds);
                     waiting();
                   }));
    return replace_map(map, wanted());
  }

  std::vector<DWORD> waits;
  const Tree replaced = {{"a.galaxy", "new"}, {"a.galfix", "fix"}, {"a.galold", "old"}};
  ScratchFolder scratch;
  WindowsFiles files;
};

// A map on a file system without hard links.
class WithoutLinks : public WindowsMap {
public:
  using WindowsMap::WindowsMap;
  Result<bool> link(const std::string&, const std::string&) override { return false; }
};

}  // namespace

TEST_F(Replace, LeavesTheBackupAndNothingElse) {
  ASSERT_TRUE(bool(replace()));
  EXPECT_EQ(scratch.tree(), replaced);
  for (const char* name : {"a.galaxy", "a.galfix", "a.galold"})
    EXPECT_FALSE(scratch.attributes_of(name) & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY));
}

TEST_F(Replace, CopiesTheBackupWhereThereAreNoSecondNames) {
  WithoutLinks map(scratch / "a.galaxy", system_path(scratch.path).wstring(), "a.galaxy", "old");
  ASSERT_TRUE(bool(replace_map(map, wanted())));
  EXPECT_EQ(scratch.tree(), replaced);
  EXPECT_FALSE(scratch.attributes_of("a.galold") & FILE_ATTRIBUTE_HIDDEN);
}

TEST_F(Replace, AReadOnlyMapStaysReadOnly) {
  scratch.add("a.galaxy", "old", FILE_ATTRIBUTE_READONLY);
  scratch.add("a.galfix", "earlier", FILE_ATTRIBUTE_READONLY);
  ASSERT_TRUE(bool(replace()));
  EXPECT_EQ(scratch.tree(), replaced);
  for (const char* name : {"a.galaxy", "a.galfix", "a.galold"})
    EXPECT_TRUE(scratch.attributes_of(name) & FILE_ATTRIBUTE_READONLY) << name;
}

TEST_F(Replace, KeepsTheFirstBackupAndTakesOneThatHoldsTheSame) {
  scratch.add("A.GALOLD", "first");
  ASSERT_TRUE(bool(replace()));
  Tree expected = replaced;
  expected["A.GALOLD2"] = "first";
  EXPECT_EQ(scratch.tree(), expected);
  scratch.add("a.galaxy", "old");
  SetFileAttributesW(system_path(scratch / "a.galold").c_str(), FILE_ATTRIBUTE_READONLY);
  ASSERT_TRUE(bool(replace()));
  EXPECT_EQ(scratch.tree(), expected);
}

TEST_F(Replace, WaitsForFilesThatAreHeldForAMoment) {
  for (const DWORD share : {DWORD{0}, DWORD{FILE_SHARE_READ}}) {
    scratch.add("a.galaxy", "old");
    scratch.add("a.galfix", "earlier");
    Handle map = hold("a.galaxy", share);
    Handle companion = hold("a.galfix", share);
    const auto done = replace_waiting([&] {
      if (waits.size() == 2)
        map = Handle();
      if (waits.size() == 4)
        companion = Handle();
    });
    EXPECT_TRUE(bool(done)) << done.failure().text();
    EXPECT_EQ(waits, (std::vector<DWORD>{15, 30, 60, 120}));
    EXPECT_EQ(scratch.tree(), replaced);
  }
}

// However many of its files are held, a map is waited for under two seconds, of which reading it
// took as long as replacing it.
TEST_F(Replace, LeavesAloneAMapWhoseFilesAreHeldForLong) {
  scratch.add("a.galfix", "earlier");
  const Tree before = scratch.tree();
  Handle map = hold("a.galaxy", 0);
  Handle companion = hold("a.galfix", 0);
  const auto done = replace_waiting([&] {
    if (waits.size() == 5)
      map = Handle();
  });
  ASSERT_FALSE(bool(done));
  EXPECT_NE(done.failure().reason, "");
  EXPECT_EQ(waits.size(), 6u);
  EXPECT_LT(std::accumulate(waits.begin(), waits.end(), DWORD{0}), 1000u);
  companion = Handle();
  EXPECT_EQ(scratch.tree(), before);
}
