// Where the Wine prefix is searched for.
#include "platform/prefix/machine.h"

#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

// A user's home with prefixes, some of which have the game.
class MachineSearch : public testing::Test {
protected:
  MachineSearch() {
    fs::create_directories(home);
    fs::current_path(home);
    setenv("HOME", home.c_str(), 1);
    unsetenv("WINEPREFIX");
  }
  ~MachineSearch() override {
    fs::current_path("/");
    setenv("HOME", "/home/player", 1);
  }

  // Makes a prefix that was last used so many hours ago. Returns its path.
  std::string make_prefix(const fs::path& place, bool with_game, int hours_ago = 0) const {
    const fs::path prefix = home / place;
    fs::create_directories(prefix / "drive_c");
    write_file(prefix / "system.reg", with_game ? "game" : "");
    write_file(prefix / "user.reg", "");
    fs::last_write_time(prefix / "user.reg",
                        fs::file_time_type::clock::now() - std::chrono::hours(hours_ago));
    return prefix.string();
  }

  Machine find() {
    asked.clear();
    return find_machine([&](const Machine& candidate) {
      asked.push_back(candidate.folder);
      return read_file(fs::path(candidate.folder) / "system.reg") == "game";
    });
  }

  const TestMachine machine;
  const fs::path home = machine.program / "home";
  const std::string own = (home / ".wine").string();
  std::vector<std::string> asked;  // the prefixes that were asked for the game
};

}  // namespace

TEST_F(MachineSearch, TakesWhatIsNamedOrAroundTheCurrentFolder) {
  const std::string launchers = make_prefix("Games/vorakai", true);
  const fs::path inside = machine.drive_c / "users";
  setenv("WINEPREFIX", "/some/prefix/", 1);
  fs::current_path(inside);
  EXPECT_EQ(find().folder, "/some/prefix");
  EXPECT_EQ(find().current_folder, inside.string());

  unsetenv("WINEPREFIX");
  EXPECT_EQ(find().folder, machine.prefix.string());
  EXPECT_TRUE(asked.empty());

  setenv("WINEPREFIX", "", 1);
  fs::remove(machine.prefix / "system.reg");
  EXPECT_EQ(find().folder, launchers);
  unsetenv("WINEPREFIX");
}

TEST_F(MachineSearch, TakesTheUsersOwnWithTheGameOrWhenNoneHasIt) {
  make_prefix("Games/vorakai", false);
  EXPECT_EQ(find().folder, own);
  EXPECT_FALSE(find().chosen);

  make_prefix(".wine", true, 1000);
  EXPECT_EQ(find().folder, own);
  EXPECT_FALSE(find().chosen);
  const std::string other = make_prefix("Games/other", true);
  fs::create_directory_symlink(own, home / "Games/mine");
  EXPECT_EQ(find().folder, own);
  EXPECT_TRUE(find().chosen);
  EXPECT_EQ(find().others, std::vector{other});
}

TEST_F(MachineSearch, LooksInThePlacesOfAllLaunchers) {
  const std::string disk = (home / "disk").string();
  const std::string library_list = "\"libraryfolders\"\n{\n\t\"0\"\n\t{\n\t\t\"path\"\t\t\"" +
                                   disk + "\"\n\t\t\"label\"\t\t\"\"\n\t}\n}\n";
  const std::string on_disk = "disk/steamapps/compatdata/7/pfx";
  const std::string yaml = "game:\n  exe: x.exe\n  prefix: " + disk + "\nsystem: {}\n";
  const std::string json = R"({"Vora": {"winePrefix": ")" + disk + R"("}, "version": "v0"})";
  const struct {
    std::string place;
    std::string list;  // a launcher's file that names it
    std::string content;
  } cases[] = {
      // clang-format off
      {".steam/steam/steamapps/compatdata/7/pfx", "", ""},
      {".local/share/Steam/steamapps/compatdata/7/pfx", "", ""},
      {".var/app/com.valvesoftware.Steam/.local/share/Steam/steamapps/compatdata/7/pfx", "", ""},
      {"snap/steam/common/.local/share/Steam/steamapps/compatdata/7/pfx", "", ""},
      {on_disk, ".steam/steam/steamapps/libraryfolders.vdf", library_list},
      {on_disk, ".local/share/Steam/steamapps/libraryfolders.vdf", library_list},
      {on_disk, ".var/app/com.valvesoftware.Steam/.local/share/Steam/steamapps/libraryfolders.vdf", library_list},
      {on_disk, "snap/steam/common/.local/share/Steam/steamapps/libraryfolders.vdf", library_list},
      {"Games/vorakai", "", ""},
      {"disk", ".local/share/lutris/games/vorakai-1.yml", yaml},
      {"disk", ".config/lutris/games/vorakai-1.yml", yaml},
      {"disk", ".var/app/net.lutris.Lutris/data/lutris/games/vorakai-1.yml", yaml},
      {"disk", ".var/app/net.lutris.Lutris/config/lutris/games/vorakai-1.yml", yaml},
      {"disk", ".config/lutris/games/quoted.yml", "game:\r\n  prefix: '" + disk + "' \r\n"},
      {"disk", ".config/lutris/games/home.yml", "prefix: ~/disk"},
      {".local/share/bottles/bottles/Vorakai", "", ""},
      {".var/app/com.usebottles.bottles/data/bottles/bottles/Vorakai", "", ""},
      {"Games/Heroic/Prefixes/Vorakai", "", ""},
      {"Games/Heroic/Prefixes/Vorakai/pfx", "", ""},
      {"Games/Heroic/Prefixes/default/Vorakai", "", ""},
      {"Games/Heroic/Prefixes/default/Vorakai/pfx", "", ""},
      {"disk", ".config/heroic/GamesConfig/Vora.json", json},
      {"disk/pfx", ".config/heroic/GamesConfig/Vora.json", json},
      {"disk", ".var/app/com.heroicgameslauncher.hgl/config/heroic/GamesConfig/Vora.json", json},
      {".local/share/wineprefixes/vorakai", "", ""},
      {".PlayOnLinux/wineprefix/vorakai", "", ""},
      {".cxoffice/vorakai", "", ""},
      {"Games/umu/vorakai", "", ""},
      // clang-format on
  };
  for (const auto& c : cases) {
    const std::string prefix = make_prefix(c.place, true);
    if (!c.list.empty())
      write_file(home / c.list, c.content);
    EXPECT_EQ(find().folder, prefix) << c.list;
    EXPECT_TRUE(find().chosen && find().others.empty()) << c.place;
    fs::remove_all(home);
    fs::create_directories(home);
    fs::current_path(home);
  }
}

TEST_F(MachineSearch, TakesTheLastUsedWithTheGameAndNamesTheOthers) {
  const std::string second = make_prefix("Games/a", true, 20);
  const std::string newest = make_prefix(".cxoffice/b", true, 10);
  const std::string third = make_prefix("Games/umu/c", true, 30);
  const std::string without = make_prefix("Games/d", false, 1);
  fs::create_directory_symlink(newest, home / "Games/same");
  write_file(home / ".config/lutris/games/same.yml", "prefix: " + second + "/../a/\n");
  fs::remove(fs::path(third) / "user.reg");  // its time of use is not known
  const Machine found = find();
  EXPECT_TRUE(fs::equivalent(found.folder, newest)) << found.folder;
  EXPECT_TRUE(found.chosen);
  EXPECT_EQ(found.others, (std::vector{second, third}));
  EXPECT_EQ(asked.size(), 5U);
  EXPECT_EQ(asked[0], own);
  EXPECT_EQ(asked[1], without);
  EXPECT_EQ(asked.back(), third);
}

TEST_F(MachineSearch, SkipsWhatIsNoPrefixOrMalformed) {
  fs::create_directories(home / "Games/empty");
  write_file(home / "Games/no_drives/system.reg", "game");
  write_file(home / "Games/file", "game");
  fs::create_directory_symlink("loop", home / "Games/loop");
  make_prefix("Games/.hidden", true);
  make_prefix("relative", true);
  const fs::path heroic = home / ".config/heroic/GamesConfig";
  write_file(heroic / "1.json", "{\"a\": {\"winePrefix\": ");
  write_file(heroic / "2.json", R"({"a": {"winePrefix": 7}, "b": [], "c": {}, "d": null})");
  write_file(heroic / "3.json", R"(["winePrefix"])");
  write_file(heroic / "4.json", R"({"a": {"winePrefix": "/x\u0000y"}, "b": {"winePrefix": ""}})");
  write_file(heroic / "5.json", "{\"a\": {\"winePrefix\": \"/\xff\"}}");
  write_file(heroic / "6.json", std::string(1'000'000, '['));
  const std::string hidden = (home / "Games/.hidden").string();
  write_file(heroic / "7.json", R"({"a": {"winePrefix": ")" + hidden + R"("}})" +
                                    std::string(1 << 20, ' '));  // too large
  write_file(home / ".config/lutris/games/1.yml", "prefix:\nprefix: relative\n prefix: '\nprefix");
  write_file(home / ".steam/steam/steamapps/libraryfolders.vdf",
             "\"path\"\n\"path\" \"\n\"path\" \"\\\n\"\n\"path\" x\npath");
  fs::create_directories(home / ".config/lutris/games/folder.yml");
  EXPECT_EQ(find().folder, own);
  EXPECT_EQ(asked, std::vector{own});
}

TEST_F(MachineSearch, TakesNoMoreThanAHundredPathsFromAFile) {
  const std::string prefix = make_prefix("disk", true);
  std::string lines;
  for (const auto& [count, folder] : {std::pair(99, prefix), std::pair(1, own)}) {
    for (int i = 0; i < count; ++i)
      lines.insert(0, "prefix: /nowhere" + std::to_string(lines.size()) + "\nprefix: /nowhere0/\n");
    write_file(home / ".config/lutris/games/1.yml", lines + "prefix: " + prefix + "\n");
    EXPECT_EQ(find().folder, folder);
  }
}
