// What only Windows has of a map: attributes, and files that are held for a moment.
#include "platform/replacing.h"

#include "platform/windows/windows_files.h"
#include "platform/windows/windows_map.h"
#include "tests/support/test_machine.h"
#include "tests/support/windows/folders.h"

#include <gtest/gtest.h>

namespace {

constexpr char map_path[] = "C:\\m\\a.galaxy", map_name[] = "a.galaxy";

class ReplaceOnWindows : public testing::Test {
protected:
  ReplaceOnWindows() { write_file(maps / "a.galaxy", "old"); }

  static Replacement wanted() { return {"old", {{"a.galfix", "fix"}}, "new", "a.galold"}; }

  // Holds a file as a virus scanner does, sharing nothing or reading alone.
  Handle hold(const char* name, DWORD share) const {
    const HANDLE holder =
        CreateFileW((maps / name).c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(holder, INVALID_HANDLE_VALUE);
    return Handle(holder);
  }

  Result<Done> replace(std::unique_ptr<WindowsMap> map) {
    return replace_map(files, std::move(map), wanted());
  }

  // Replaces the map; `waiting` is called instead of each wait, which `waits` counts.
  Result<Done> replace_waiting(const std::function<void()>& waiting) {
    waits.clear();
    auto budget = std::make_shared<RetryBudget>([&](DWORD milliseconds) {
      waits.push_back(milliseconds);
      waiting();
    });
    return replace(
        std::make_unique<WindowsMap>(map_path, maps.wstring(), map_name, "old", std::move(budget)));
  }

  std::vector<DWORD> waits;
  const Tree replaced = {{"a.galaxy", "new"}, {"a.galfix", "fix"}, {"a.galold", "old"}};
  TestMachine machine;
  WindowsFiles files;
  const std::filesystem::path maps = machine.drive_c / "m";
};

// A map on a file system without hard links.
class WithoutLinks : public WindowsMap {
public:
  using WindowsMap::WindowsMap;
  Result<bool> link(const std::string&, const std::string&) override { return false; }
};

}  // namespace

TEST_F(ReplaceOnWindows, FilesKeepTheMapsAttributes) {
  for (const DWORD attributes : {FILE_ATTRIBUTE_NORMAL, FILE_ATTRIBUTE_READONLY}) {
    for (const bool links : {true, false}) {
      remove_folder(maps.wstring());
      for (const char* name : {"a.galaxy", "a.galfix"}) {
        write_file(maps / name, "old");
        SetFileAttributesW((maps / name).c_str(), attributes);
      }
      ASSERT_TRUE(bool(replace(
          links ? std::make_unique<WindowsMap>(map_path, maps.wstring(), map_name, "old")
                : std::make_unique<WithoutLinks>(map_path, maps.wstring(), map_name, "old"))));
      EXPECT_EQ(tree(maps), replaced);
      for (const auto& [name, text] : replaced)
        EXPECT_EQ(GetFileAttributesW((maps / name).c_str()) &
                      (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY),
                  attributes & FILE_ATTRIBUTE_READONLY)
            << name;
    }
  }
}

// However many of its files are held, a map is waited for under a second, 945 ms.
TEST_F(ReplaceOnWindows, WaitsForFilesThatAreHeldForAMoment) {
  const struct {
    DWORD share;
    bool done;
    std::size_t map_held, companion_held;  // for so many waits
    std::vector<DWORD> waits;
  } cases[] = {{0, false, 5, 7, {15, 30, 60, 120, 240, 480}},
               {0, true, 2, 4, {15, 30, 60, 120}},
               {FILE_SHARE_READ, true, 2, 4, {15, 30, 60, 120}}};
  for (const auto& c : cases) {
    write_file(maps / "a.galaxy", "old");
    write_file(maps / "a.galfix", "earlier");
    const Tree before = tree(maps);
    Handle map = hold("a.galaxy", c.share), companion = hold("a.galfix", c.share);
    const auto done = replace_waiting([&] {
      if (waits.size() == c.map_held)
        map.reset();
      if (waits.size() == c.companion_held)
        companion.reset();
    });
    companion.reset();
    EXPECT_EQ(bool(done), c.done);
    EXPECT_TRUE(done || done.failure().reason != "");
    EXPECT_EQ(waits, c.waits);
    EXPECT_EQ(tree(maps), c.done ? replaced : before);
  }
}

// Nothing is begun that could not be undone while the map may not be renamed. Where its holder
// shares deleting, the system decides at the last step, when the companion is in place.
TEST_F(ReplaceOnWindows, AMapThatMayNotBeRenamedStaysAsItWas) {
  write_file(maps / "a.galold", "old");
  const Tree before = tree(maps);
  for (DWORD share = 0; share < 8; ++share) {
    Handle map = hold("a.galaxy", share);
    const bool done = bool(replace_waiting([] {}));
    map.reset();
    Tree left = tree(maps);
    if (share & FILE_SHARE_DELETE)
      left.erase("a.galfix");
    else
      EXPECT_FALSE(done) << share;
    EXPECT_EQ(left, done ? Tree({{"a.galaxy", "new"}, {"a.galold", "old"}}) : before) << share;
    std::filesystem::remove(maps / "a.galfix");
    write_file(maps / "a.galaxy", "old");
  }
}
