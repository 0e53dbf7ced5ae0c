// What only Windows has of files: attributes, links of a profile, and paths without a limit.
#include "platform/windows/windows_files.h"

#include "platform/windows/handle.h"
#include "platform/windows/wide_text.h"
#include "tests/support/test_machine.h"
#include "tests/support/windows/folders.h"

#include <gtest/gtest.h>

namespace {

class WindowsFilesTest : public testing::Test {
protected:
  TestMachine machine;
  WindowsFiles files;
};

}  // namespace

TEST_F(WindowsFilesTest, HiddenAndSystemEntriesAreNotThere) {
  for (const DWORD attributes : {FILE_ATTRIBUTE_HIDDEN, FILE_ATTRIBUTE_SYSTEM}) {
    write_file("C:\\f\\a.galaxy", "x");
    SetFileAttributesW(L"C:\\f\\a.galaxy", attributes);
    EXPECT_EQ(*files.lookup("C:\\f\\a.galaxy", Match::files_and_folders), "");
    EXPECT_TRUE(files.list("C:\\f", "*")->empty());
    std::filesystem::remove("C:\\f\\a.galaxy");
  }
}

// A profile that Wine makes has its documents elsewhere, behind a link, and its favourites inside.
TEST_F(WindowsFilesTest, TellsLinksApart) {
  wchar_t profile[MAX_PATH];
  ASSERT_GT(GetEnvironmentVariableW(L"USERPROFILE", profile, MAX_PATH), 0u);
  std::map<std::string, bool> links;
  const auto entries = files.list(narrow(profile), "*");
  for (const Entry& entry : *entries)
    links[entry.name] = entry.link && entry.folder;
  EXPECT_TRUE(links.at("Documents"));
  EXPECT_FALSE(links.at("Favorites"));
}

TEST_F(WindowsFilesTest, ReachesTreesThatAreDeepAndSpelledInAnyScript) {
  std::string deep = "C:\\users\\me\\Карта 漢字";
  while (deep.size() < 600)
    deep += "\\a folder with a rather long name of its own";
  const std::string map = deep + "\\Ægir 銀河.galaxy";
  write_file(system_path(map), "old");
  EXPECT_EQ(*files.lookup(map, Match::files), "Ægir 銀河.galaxy");
  EXPECT_EQ(files.list(deep, "*.galaxy")->size(), 1u);
  ASSERT_TRUE(bool(replace_map(files, map, {"old", {}, "new", "Ægir 銀河.galold"})));
  EXPECT_EQ(*files.read(map), "new");
}

// A pipe that does not wait takes nothing more once it is full, and that is no error to it.
TEST(Handles, AWriteThatWritesNothingFails) {
  HANDLE read_end, write_end;
  ASSERT_TRUE(CreatePipe(&read_end, &write_end, nullptr, 0));
  const Handle reading(read_end), writing(write_end);
  DWORD mode = PIPE_NOWAIT;
  ASSERT_TRUE(SetNamedPipeHandleState(write_end, &mode, nullptr, nullptr));
  EXPECT_FALSE(write_all(writing, std::string(1 << 20, 'x')));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_WRITE_FAULT});
}

// Such a name comes from a listing, in which U+FFFD stands for the surrogate.
TEST_F(WindowsFilesTest, SayWhenANameIsNoText) {
  const std::string name = "C:\\users\\me\\a\xEF\xBF\xBD";
  for (const auto& outcome : {files.read(name + ".galaxy"), files.full_path(name)}) {
    ASSERT_FALSE(bool(outcome));
    EXPECT_EQ(outcome.failure().reason, "its name is no text: it has an unpaired surrogate");
  }
  write_file(system_path(name + ".galaxy"), "text");
  EXPECT_TRUE(bool(files.read(name + ".galaxy")));
}
