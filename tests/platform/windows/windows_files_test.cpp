// The files of Windows itself.
#include "platform/windows/windows_files.h"

#include "platform/windows/handle.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>

namespace {

class WindowsFilesTest : public testing::Test {
protected:
  std::string lookup(const std::string& path, Match match = Match::files) {
    const auto name = files.lookup(path, match);
    return name ? *name : "failed";
  }

  std::vector<std::string> names(const std::string& folder, std::string_view pattern) {
    std::vector<std::string> result;
    const auto entries = files.list(folder, pattern);
    EXPECT_TRUE(bool(entries));
    for (const Entry& entry : *entries)
      result.push_back((entry.folder ? "\\" : "") + entry.name);
    return result;
  }

  ScratchFolder scratch;
  WindowsFiles files;
};

}  // namespace

TEST_F(WindowsFilesTest, LooksUpNamesButNeverHiddenOnesOrPatterns) {
  scratch.add("Map.galaxy", "x");
  scratch.add("sub\\inside.txt", "x");
  scratch.add("empty\\gone\\x", "x");
  scratch.add("hidden.txt", "x", FILE_ATTRIBUTE_HIDDEN);
  scratch.add("system.txt", "x", FILE_ATTRIBUTE_SYSTEM);
  const struct {
    const char* name;
    Match match;
    const char* found;
  } cases[] = {
      {"mAP.GALAXY", Match::files, "Map.galaxy"},
      {"sub\\..\\.\\Map.galaxy", Match::files, "Map.galaxy"},
      {"sub", Match::files, ""},
      {"SUB", Match::files_and_folders, "sub"},
      {"sub\\", Match::files, "inside.txt"},
      {"sub\\", Match::files_and_folders, "."},
      {"sub\\.", Match::files_and_folders, "."},
      {"sub\\.", Match::files, ""},
      {"empty\\", Match::files, ""},
      {"missing\\", Match::files_and_folders, ""},
      {"missing\\x", Match::files, ""},
      {"Map.galaxy\\", Match::files_and_folders, ""},
      {"hidden.txt", Match::files, ""},
      {"system.txt", Match::files_and_folders, ""},
      {"*.galaxy", Match::files, "failed"},
      {"Map?galaxy", Match::files, "failed"},
      {"Map.galaxy:stream", Match::files, "failed"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(lookup(scratch / c.name, c.match), c.found) << c.name;
  EXPECT_EQ(lookup("C:\\", Match::files_and_folders), ".");
  EXPECT_EQ(lookup("Q:\\", Match::files_and_folders), "");
  EXPECT_EQ(lookup("", Match::files), "failed");
}

TEST_F(WindowsFilesTest, ListsInOrderWhatIsNotHidden) {
  for (const char* name : {"b.galaxy", "A.galaxy", "Ärger.GALAXY", "c.galaxy2", "d.txt", "Z\\x",
                           "folder.galaxy\\x", "Жук.galaxy"})
    scratch.add(name, "x");
  scratch.add("e.galaxy", "x", FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY);
  using Names = std::vector<std::string>;
  EXPECT_EQ(names(scratch.path, "*.galaxy"), (Names{"A.galaxy", "b.galaxy", "\\folder.galaxy",
                                                    "\\Z", "Ärger.GALAXY", "Жук.galaxy"}));
  EXPECT_EQ(names(scratch / "Z\\", "*"), Names{"x"});
  EXPECT_FALSE(bool(files.list(scratch / "missing", "*")));
  EXPECT_FALSE(bool(files.list(scratch / "d.txt", "*")));
}

// A profile that Wine makes has its documents elsewhere, behind a link.
TEST_F(WindowsFilesTest, TellsLinksApart) {
  wchar_t profile[MAX_PATH];
  ASSERT_GT(GetEnvironmentVariableW(L"USERPROFILE", profile, MAX_PATH), 0u);
  const auto entries = files.list(narrow(profile), "*");
  ASSERT_TRUE(bool(entries));
  bool checked = false;
  for (const Entry& entry : *entries) {
    EXPECT_EQ(entry.link, entry.name == "Documents" || entry.name == "Desktop" ||
                              entry.name == "Downloads" || entry.name == "Music" ||
                              entry.name == "Pictures" || entry.name == "Videos")
        << entry.name;
    checked = checked || (entry.link && entry.folder);
  }
  EXPECT_TRUE(checked);
}

TEST_F(WindowsFilesTest, ReachesTreesThatAreDeepAndSpelledInAnyScript) {
  std::string deep = "Карта 漢字";
  while (deep.size() < 600)
    deep += "\\a folder with a rather long name of its own";
  const std::string map = deep + "\\Ægir 銀河.galaxy";
  scratch.add(map, "old");
  EXPECT_EQ(lookup(scratch / map), "Ægir 銀河.galaxy");
  EXPECT_EQ(names(scratch / deep, "*.galaxy"), std::vector<std::string>{"Ægir 銀河.galaxy"});
  const auto opened = files.open_map(scratch / map);
  ASSERT_TRUE(bool(opened));
  ASSERT_TRUE(bool(replace_map(**opened, {"old", {}, "new", "Ægir 銀河.galold"})));
  EXPECT_EQ(*files.read(scratch / map), "new");
}

TEST_F(WindowsFilesTest, GivesFullPathsAsTheDiskSpellsThem) {
  scratch.add("Maps\\Old School\\x", "x");
  EXPECT_EQ(*files.full_path(scratch / "maps\\\\OLD school\\"), scratch / "Maps\\Old School");
  EXPECT_EQ(*files.full_path("c:\\"), "C:\\");
  ASSERT_TRUE(SetCurrentDirectoryW(widen(scratch / "Maps").c_str()));
  EXPECT_EQ(*files.full_path("old school"), scratch / "Maps\\Old School");
  EXPECT_EQ(*files.full_path(".."), scratch.path);
  EXPECT_EQ(*files.full_path("\\"), scratch.path.substr(0, 3));
  SetCurrentDirectoryW(L"C:\\");
  const auto missing = files.full_path(scratch / "missing");
  ASSERT_FALSE(bool(missing));
  EXPECT_TRUE(missing.failure().missing);
  EXPECT_FALSE(bool(files.full_path(scratch / "Maps\\Old School\\x")));
}

TEST_F(WindowsFilesTest, ReadsAndWritesBytes) {
  const std::string path = scratch / "text.txt";
  const std::string bytes("a\r\n\0\xFF\x1A", 6);
  EXPECT_TRUE(bool(files.write(path, "something longer than what follows")));
  EXPECT_TRUE(bool(files.write(path, bytes)));
  EXPECT_TRUE(bool(files.append(path, "more")));
  EXPECT_EQ(*files.read(path), bytes + "more");
  EXPECT_TRUE(bool(files.append(scratch / "new.txt", "")));
  EXPECT_EQ(*files.read(scratch / "new.txt"), "");
  const auto missing = files.read(scratch / "missing.txt");
  ASSERT_FALSE(bool(missing));
  EXPECT_TRUE(missing.failure().missing);
  EXPECT_NE(missing.failure().reason, "");
  EXPECT_FALSE(bool(files.read(scratch.path)));
  EXPECT_FALSE(bool(files.write(scratch / "no\\such\\folder.txt", "x")));
  EXPECT_FALSE(bool(files.read("NUL")));
}
