// How a map gives way to its converted self on Windows.
#include "platform/replacing.h"

#include "platform/windows/windowsfiles.h"
#include "platform/windows/windowsmapfolder.h"
#include "tests/support/scratchfolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using Tree = std::map<std::string, std::string>;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

namespace {

class Replace : public testing::Test {
protected:
  Replace() { scratch.add("a.galaxy", "old"); }

  Replacement wanted() const {
    return {scratch / "a.galaxy",
            "old",
            {{scratch / "a.galfix", "fix"}, {scratch / "a.galaxy", "new"}},
            scratch / "a.galold"};
  }

  Result<Done> replace() { return files.replace(wanted()); }

  // Holds the map as a virus scanner does, sharing nothing or reading alone.
  HANDLE hold(DWORD share) const {
    const HANDLE holder = CreateFileW(systempath(scratch / "a.galaxy").c_str(), GENERIC_READ, share,
                                      nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(holder, INVALID_HANDLE_VALUE);
    return holder;
  }

  const Tree replaced = {{"a.galaxy", "new"}, {"a.galfix", "fix"}, {"a.galold", "old"}};
  ScratchFolder scratch;
  WindowsFiles files;
};

// A folder of a file system that knows no second names.
class WithoutLinks : public WindowsMapFolder {
public:
  using WindowsMapFolder::WindowsMapFolder;
  Answer<bool> link(const std::string&, const std::string&) override { return false; }
};

}  // namespace

TEST_F(Replace, LeavesTheBackupAndNothingElse) {
  ASSERT_TRUE(bool(replace()));
  EXPECT_EQ(scratch.tree(), replaced);
  for (const char* name : {"a.galaxy", "a.galfix", "a.galold"})
    EXPECT_FALSE(scratch.attributesof(name) & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY));
}

TEST_F(Replace, CopiesTheBackupWhereThereAreNoSecondNames) {
  WithoutLinks folder(systempath(scratch.path).wstring());
  const Replacement replacement = wanted();
  ASSERT_TRUE(bool(Replacing(folder, "a.galaxy", replacement).run()));
  EXPECT_EQ(scratch.tree(), replaced);
  EXPECT_FALSE(scratch.attributesof("a.galold") & FILE_ATTRIBUTE_HIDDEN);
}

TEST_F(Replace, AReadOnlyMapStaysReadOnly) {
  scratch.add("a.galaxy", "old", FILE_ATTRIBUTE_READONLY);
  scratch.add("a.galfix", "earlier", FILE_ATTRIBUTE_READONLY);
  ASSERT_TRUE(bool(replace()));
  EXPECT_EQ(scratch.tree(), replaced);
  for (const char* name : {"a.galaxy", "a.galfix", "a.galold"})
    EXPECT_TRUE(scratch.attributesof(name) & FILE_ATTRIBUTE_READONLY) << name;
}

TEST_F(Replace, KeepsTheFirstBackupAndTakesOneThatHoldsTheSame) {
  scratch.add("A.GALOLD", "first");
  ASSERT_TRUE(bool(replace()));
  Tree expected = replaced;
  expected["A.GALOLD2"] = "first";
  EXPECT_EQ(scratch.tree(), expected);
  scratch.add("a.galaxy", "old");
  SetFileAttributesW(systempath(scratch / "a.galold").c_str(), FILE_ATTRIBUTE_READONLY);
  ASSERT_TRUE(bool(replace()));
  EXPECT_EQ(scratch.tree(), expected);
}

TEST_F(Replace, WaitsForAFileThatIsHeldForAMoment) {
  for (const DWORD share : {DWORD{0}, DWORD{FILE_SHARE_READ}}) {
    scratch.add("a.galaxy", "old");
    const HANDLE holder = hold(share);
    std::thread scanner([holder] {
      std::this_thread::sleep_for(milliseconds(300));
      CloseHandle(holder);
    });
    const auto done = replace();
    scanner.join();
    EXPECT_TRUE(bool(done)) << done.failure().text();
    EXPECT_EQ(scratch.tree(), replaced);
  }
}

TEST_F(Replace, LeavesAloneAMapThatIsHeldForLong) {
  const HANDLE holder = hold(0);
  const auto start = Clock::now();
  const auto done = replace();
  const auto waited = Clock::now() - start;
  CloseHandle(holder);
  ASSERT_FALSE(bool(done));
  EXPECT_NE(done.failure().reason, "");
  EXPECT_GT(waited, milliseconds(900));
  EXPECT_LT(waited, milliseconds(2000));
  EXPECT_EQ(scratch.tree(), (Tree{{"a.galaxy", "old"}}));
}
