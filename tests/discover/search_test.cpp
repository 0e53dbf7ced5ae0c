// Which maps a search finds, in which order, and what it shows.
#include "discover/search.h"

#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

using Found = std::vector<std::string>;

namespace {

// Searches both roots; what was found, without the empty element at the end.
Found find_on(Program& program, const std::string& user, const std::string& game) {
  program.form.pathlist = {user, game};
  findgalaxies(program.form);
  Found paths = program.form.foundlist;
  EXPECT_EQ(paths.back(), "");
  paths.pop_back();
  return paths;
}

class Search : public testing::Test {
protected:
  Found find(const std::string& user, const std::string& game) {
    return find_on(program, user, game);
  }

  void add(const char* path) { write_file(machine.drive_c / path, "x"); }

  TestMachine machine;
  Program program{machine};
};

}  // namespace

TEST_F(Search, WalksDepthFirstWithEachFoldersFilesLast) {
  for (const char* path : {"r/b.galaxy", "r/A.galaxy", "r/maps2/x.galaxy", "r/Maps1/y.galaxy",
                           "r/Maps1/deep/z.galaxy", "r/other.txt", "r/a.galold"})
    add(path);
  const Found expected = {"C:\\r\\Maps1\\deep\\z.galaxy", "C:\\r\\Maps1\\y.galaxy",
                          "C:\\r\\maps2\\x.galaxy", "C:\\r\\A.galaxy", "C:\\r\\b.galaxy"};
  int yields = 0;
  program.screen.pending = [&] { ++yields; };
  EXPECT_EQ(find("C:\\r", "C:\\nowhere\\"), expected);
  EXPECT_EQ(yields, 3);
  EXPECT_EQ(program.form.Text1.text(),
            "z.galaxy\r\ny.galaxy\r\nx.galaxy\r\nA.galaxy\r\nb.galaxy\r\n");
  EXPECT_EQ(program.form.Label6.text(), "4");
  EXPECT_EQ(program.form.Label8.text(), "1");
  EXPECT_EQ(find("c:\\R\\\\", "Q:\\"), expected);
}

TEST_F(Search, SearchesBothRootsEvenWhenTheyAreTheSame) {
  add("r/a.galaxy");
  EXPECT_EQ(find("C:\\r\\", "C:\\r"), (Found{"C:\\r\\a.galaxy", "C:\\r\\a.galaxy"}));
  EXPECT_EQ(program.form.rootpath, "C:\\r");
  fs::remove(machine.drive_c / "r/a.galaxy");
  program.form.Text1.set_text("typed");
  EXPECT_EQ(find("C:\\r\\", "C:\\r"), Found{});
  EXPECT_EQ(program.form.Text1.text(), "typed");
  EXPECT_EQ(program.form.Label6.text(), "-1");
  EXPECT_EQ(program.form.Label8.text(), "2");
}

TEST_F(Search, AnEmptyRootIsTheCurrentDrivesWhole) {
  add("a.galaxy");
  add("sub/b.galaxy");
  machine.data = machine.drive_c / "users";
  Program on_c_drive(machine);
  EXPECT_EQ(find_on(on_c_drive, "", "C:\\sub"),
            (Found{"C:\\sub\\b.galaxy", "C:\\a.galaxy", "C:\\sub\\b.galaxy"}));
}

TEST_F(Search, PassesOverLinksHiddenNamesAndWhatWindowsCannotName) {
  if (machine.prefix.empty())
    GTEST_SKIP() << "a program of Windows makes no such entries";
  for (const char* path :
       {"r/a.galaxy", "r/.hidden/b.galaxy", "r/.galaxy", "r/back\\slash.galaxy", "r/what?.galaxy",
        "r/folder.galaxy/inside.galaxy", "r/\xFF.galaxy", "elsewhere/c.galaxy"})
    add(path);
  fs::create_symlink("../elsewhere", machine.drive_c / "r/link");
  fs::create_symlink("../elsewhere/c.galaxy", machine.drive_c / "r/link.galaxy");
  fs::create_symlink("..", machine.drive_c / "r/up");
  fs::create_symlink("r", machine.drive_c / "root");
  EXPECT_EQ(find("C:\\r", "C:\\elsewhere"),
            (Found{"C:\\r\\folder.galaxy\\inside.galaxy", "C:\\r\\a.galaxy", "C:\\r\\\xFF.galaxy",
                   "C:\\elsewhere\\c.galaxy"}));
  EXPECT_EQ(find("C:\\root", "C:\\elsewhere").size(), 4u);
}

TEST_F(Search, LeavesTheListsAtTheParentOfTheLastRoot) {
  add("r/game/a.galaxy");
  add("r/b.galaxy");
  program.form.File1.set_pattern("*.galaxy");
  program.form.Dir1.changed = [&] { program.form.File1.set_path(program.form.Dir1.path()); };
  find("C:\\users", "C:\\r\\game\\");
  EXPECT_EQ(program.form.Dir1.path(), "C:\\r");
  EXPECT_EQ(program.form.File1.names(), Found{"b.galaxy"});
  add("r/c.galaxy");
  add("r/new/d.galaxy");
  find("C:\\r\\game", "C:\\r\\game\\");
  EXPECT_EQ(program.form.Dir1.subfolders(), (Found{"game", "new"}));
  EXPECT_EQ(program.form.File1.names(), (Found{"b.galaxy", "c.galaxy"}));
  program.form.File1.set_path("C:\\nowhere");
  EXPECT_EQ(program.form.File1.names(), Found{});
  find("C:\\r\\game", "C:\\");
  EXPECT_EQ(program.form.Dir1.path(), "C:\\");
  find("C:\\r\\game", "D:\\gone");
  EXPECT_EQ(program.form.Dir1.path(), "C:\\r");
}
