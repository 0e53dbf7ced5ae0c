// Start-up over the combinations of installed editions, versions, debug mode and arguments.
#include "app/startup.h"

#include "app/edition.h"
#include "app/installation.h"
#include "tests/support/fake_system.h"
#include "tests/support/test_machine.h"
#include "ui/handlers.h"
#include "ui/layout.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

constexpr VersionParts base_release{1, 2, 3, 4};
constexpr VersionParts expansion_release{5, 6, 7, 8};

const std::string user_space = "C:\\users\\me\\AppData\\Local\\Kettlewick Games\\Vorakai\\";
const std::string expansion_space =
    "C:\\users\\me\\Documents\\My Games\\Kettlewick Games\\Vorakai Tarnfall";

void install(TestMachine& machine, const std::string& edition) {
  machine.install(edition, edition == "voratarnfall" ? expansion_release : base_release);
}

void set_debug(const TestMachine& machine) {
  write_file(machine.data / "targetvoraver.txt", "1.2.3.4\r\n\r\n\r\n\r\n5.6.7.8\r\n\r\nDEBUG\r\n");
}

}  // namespace

TEST(Startup, SelectsTheEditionThatIsInstalledAloneOrClickedOn) {
  // "P" stands for the program's own folder, "U" and "T" for the user space folders, "click v" for
  // a click on the base edition's button.
  const std::string vora = "C:\\Games\\vora\\";
  const std::string zendrel = "C:\\Games\\vorazendrel\\";
  const std::string tarnfall = "C:\\Games\\voratarnfall\\";
  const struct {
    const char* name;
    std::vector<std::string> installed;
    std::string then;
    const char* windows;
    bool user_files;
    bool debugmode;
    const char* edition;
    std::string gamepath, program_space, user;
    bool command6, command7;
    const char* release;
  } cases[] = {
      // clang-format off
      {"base",                               {"vora"},                 "", "6.3", true,  false, "v", vora,     vora,    "U", true,  false, "1.2.3.4"},
      {"base, no user folder",               {"vora"},                 "", "6.3", false, false, "v", vora,     "P",     "U", true,  false, "1.2.3.4"},
      {"base on Windows 7",                  {"vora"},                 "", "6.1", true,  false, "v", vora,     "U",     "U", true,  false, "1.2.3.4"},
      {"base on Vista",                      {"vora"},                 "", "6.0", true,  false, "v", vora,     "U",     "U", true,  false, "1.2.3.4"},
      {"base on Windows 7, no user folder",  {"vora"},                 "", "6.1", false, false, "v", vora,     "P",     "U", true,  false, "1.2.3.4"},
      {"base on XP, debug",                  {"vora"},                 "", "5.1", true,  true,  "v", vora,     vora,    "U", true,  false, "1.2.3.4"},
      {"bundle",                             {"vora", "vorazendrel"},  "", "6.3", true,  false, "v", zendrel,  zendrel, "U", true,  false, "1.2.3.4"},
      {"expansion",                          {"voratarnfall"},         "", "6.3", true,  false, "t", tarnfall, "P",     "T", false, true,  "5.6.7.8"},
      {"expansion on Windows 7",             {"voratarnfall"},         "", "6.1", true,  false, "t", tarnfall, "P",     "T", false, true,  "5.6.7.8"},
      {"expansion, debug",                   {"voratarnfall"},         "", "6.3", true,  true,  "t", tarnfall, "",      "",  false, true,  "5.6.7.8"},
      {"nothing, debug",                     {},                       "", "6.3", true,  true,  "v", "",       "",      "U", false, false, ""},
      {"both, debug",                        {"vora", "voratarnfall"}, "",        "6.3", true,  true,  "",  "",       "",       "",  true,  true,  ""},
      {"both, base clicked",                 {"vora", "voratarnfall"}, "click v", "6.3", true,  false, "v", vora,     vora,     "U", false, false, "1.2.3.4"},
      {"both, base clicked, no user folder", {"vora", "voratarnfall"}, "click v", "6.3", false, false, "v", vora,     "P",      "U", false, false, "1.2.3.4"},
      {"both, expansion clicked",            {"vora", "voratarnfall"}, "click t", "6.3", true,  false, "t", tarnfall, tarnfall, "T", false, false, "5.6.7.8"},
      {"both, expansion clicked, Windows 7", {"vora", "voratarnfall"}, "click t", "6.1", true,  false, "t", tarnfall, "T",      "T", false, false, "5.6.7.8"},
      // clang-format on
  };
  for (const auto& c : cases) {
    TestMachine machine;
    machine.write_data();
    machine.set_version(c.windows);
    for (const std::string& edition : c.installed)
      install(machine, edition);
    if (c.user_files)
      write_file(machine.user_folder / "settings.txt", "");
    if (c.debugmode)
      set_debug(machine);
    Program program(machine);
    Form1& form = program.form;
    const Tree places = {
        {"P", z_path(machine.program) + "\\"}, {"U", user_space}, {"T", expansion_space}};
    const auto place = [&](const std::string& text) {
      return places.contains(text) ? places.at(text) : text;
    };
    EXPECT_EQ(game_is_registered(*program.own_system, program.files), !c.installed.empty());
    apply_layout(form);
    form.Command6.set_visible(false);
    form.Command7.set_visible(false);
    SCOPED_TRACE(c.name);
    EXPECT_EQ(program.run([&] { startup(form); }), Program::returned);
    const std::string shown = form.Dir1.path();
    if (!c.then.empty())
      selectedition(form, c.then == "click v" ? Edition::base : Edition::expansion);
    EXPECT_EQ(form.edition, c.edition);
    EXPECT_EQ(form.gamepath, c.gamepath);
    EXPECT_EQ(form.pathlist[1], place(c.program_space));
    EXPECT_EQ(form.pathlist[0], place(c.user));
    EXPECT_EQ(form.Command4.tooltip(), form.pathlist[1]);
    EXPECT_EQ(form.Command5.tooltip(), form.pathlist[0]);
    EXPECT_EQ(form.homefolder, std::string("C:\\users\\me\\") +
                                   (*c.edition == 't' ? "Documents" : "AppData\\Local"));
    // A user space folder that is missing leaves the list where it is.
    const bool moves = c.then == "click v" && c.user_files;
    EXPECT_EQ(form.Dir1.path(), moves ? user_space.substr(0, user_space.size() - 1) : shown);
    EXPECT_EQ(form.foundversion, c.release);
    EXPECT_EQ(form.Command6.enabled(), c.command6);
    EXPECT_EQ(form.Command7.enabled(), c.command7);
    const bool both = c.installed == std::vector<std::string>{"vora", "voratarnfall"};
    EXPECT_EQ(form.bothfound, both);
    EXPECT_EQ(form.Command6.visible() && form.Command7.visible(), both);
    EXPECT_EQ(form.expansiononly, !both && *c.edition == 't');
    EXPECT_TRUE(form.Command1.enabled());
    EXPECT_FALSE(form.Command2.enabled());
    EXPECT_FALSE(form.Label19.visible());
    EXPECT_EQ(form.originalmaps[0], *c.edition ? "own.galaxy" : "");
    EXPECT_EQ(program.screen.caption, std::string("brindle's vora & Tarnfall map updater") +
                                          (c.debugmode ? " DeBuGgInG M O D E!" : ""));
    EXPECT_EQ(fs::exists(machine.data / "info.txt"), c.debugmode);
    EXPECT_TRUE(program.screen.messages.empty());
    EXPECT_EQ(form.File1.pattern(), "*.galaxy");
    EXPECT_TRUE(program.screen.shown);
    EXPECT_EQ(form.Drive1.tooltip(),
              machine.prefix.empty() ? "" : "Wine prefix: " + machine.prefix.string());
  }
}

TEST(Startup, RegisteredFoldersMustExistAndBeLongEnough) {
  for (const std::string path : {"C:\xC3\xA9\\", "C:\xE2\x82\xAC\\", "C:\xF0\x9F\x8C\x8C\\"})
    EXPECT_FALSE(is_base_registered(path)) << path;  // in characters
  EXPECT_TRUE(is_base_registered("C:\xC3\xA9\xC3\xA9\\"));
  TestMachine machine;
  const std::string key = "Software\\Wow6432Node\\Orbwright\\Paxhollow\\";
  machine.set_registry(key + "vora", "Path", "C:\\gone");
  machine.set_registry(key + "voratarnfall", "Path", "C:");  // "C:\" is too short
  machine.set_registry(key + "vorazendrel", "Path", "C:\\");
  machine.set_registry("Software\\Orbwright\\Paxhollow\\vora", "Path", "C:\\users");  // of 32 bits
  Program program(machine);
  program.run([&] { load_form(program.form); });
  EXPECT_EQ(program.form.basepath, "C:\\gone\\");
  EXPECT_EQ(program.form.bundlepath, "C:\\\\");
  EXPECT_FALSE(program.form.basefound);
  EXPECT_FALSE(program.form.expansionfound);

  if (machine.prefix.empty())
    GTEST_SKIP() << "the rest is of a Windows of 32 bits, which this one is not";
  fs::remove(machine.drive_c / "Program Files (x86)");
  Program narrow(machine);
  narrow.run([&] { load_form(narrow.form); });
  EXPECT_TRUE(narrow.form.basefound);
  EXPECT_EQ(narrow.form.Label16.text(), " 32 bit");
}

TEST(Startup, WritesTheDiagnosticFileInDebugMode) {
  std::string own;  // the program's folder
  const auto start = [&own](const std::vector<std::string>& editions,
                            std::optional<Edition> click = {}) {
    TestMachine machine;
    own = z_path(machine.program) + "\\";
    machine.write_data();
    for (const std::string& edition : editions)
      install(machine, edition);
    set_debug(machine);
    write_file(machine.program / "first", "");
    write_file(machine.user_folder / "maps.txt", "");
    Program program(machine);
    program.run([&] { load_form(program.form); });
    if (click)
      selectedition(program.form, *click);
    return read_file(machine.data / "info.txt");
  };
  const std::string home = "C:\\users\\me\\AppData\\Local\r\n";
  const std::string documents = "C:\\users\\me\\Documents\r\n";
  const std::string vora = "C:\\Games\\vora\\\r\n", tarnfall = "C:\\Games\\voratarnfall\\\r\n";
  const std::string head = "Win7+ x64?, 64 bit ?True\r\n type cores ID\r\n\r\n" + home;

  const std::string base = start({"vora"});
  EXPECT_EQ(base, head + "pathlist(1)" + vora + "pathlist(0)" + user_space + "\r\nhome " + home +
                      "App_Path()" + own +
                      "\r\n\r\nDir(pathlist(1))Vorakai.exe\r\nDir(pathlist(0))maps.txt\r\n"
                      "Dir(App_Path())first\r\n" +
                      vora + "voraversion1.2.3.4\r\n");
  const std::string expansion = start({"voratarnfall"});
  EXPECT_EQ(expansion,
            head + "pathlist(1)\r\npathlist(0)\r\nhome " + documents + "App_Path()" + own +
                "\r\n\r\nDir(pathlist(1))\r\nDir(pathlist(0))\r\nDir(App_Path())first\r\n" +
                tarnfall + "\r\n" + tarnfall + "voraversion5.6.7.8\r\n");

  const std::vector<std::string> both = {"vora", "voratarnfall"};
  const std::string undecided = head + "\r\nvoraversion\r\n";
  const std::string on_base = start(both, Edition::base);
  EXPECT_EQ(on_base, undecided + vora + user_space + "\r\n" + home + own +
                         "\r\n\r\nVorakai.exe\r\nmaps.txt\r\nfirst\r\n" + vora + "1.2.3.4\r\n");
  const std::string on_expansion = start(both, Edition::expansion);
  EXPECT_EQ(on_expansion, undecided + tarnfall + expansion_space + "\r\n" + documents + own +
                              "\r\n\r\nfirst\r\n" + tarnfall + "5.6.7.8\r\n");
}

TEST(Startup, ChecksTheReleaseOfTheInstalledGame) {
  const char right[] = "Invalid argument: /x", wrong[] = "found vora version :";
  const char whole[] = "found vora version :1.2.3.5:\r\n need vora version :1.2.3.4:\r\n"
                       "in the default location of\r\nC:\\Games\\vora\\\r\n"
                       "local apps is\r\nC:\\users\\me\\AppData\\Local:\r\n"
                       "and the vora user directory is\r\nC:\\Games\\vora\\";
  const std::string target = "1.2.3.4\r\n", lines = "\r\n\r\n\r\n\r\n";
  constexpr VersionParts newer{1, 2, 3, 5};
  const struct {
    const char* name;
    std::vector<std::string> installed;
    VersionParts release;
    std::string target;
    bool list;
    std::string reported;  // how the message begins
  } cases[] = {
      {"right", {"vora"}, base_release, target, true, right},
      {"wrong", {"vora"}, newer, target, true, whole},
      {"compared as texts", {"vora"}, base_release, "1.2.3.04\r\n", true, wrong},
      {"no list of own maps", {"vora"}, newer, target, false, right},
      {"debug with a blank", {"vora"}, newer, target + lines + "\r\ndebug \r\n", true, wrong},
      {"no target line", {"vora"}, newer, "", true, wrong},
      {"expansion: its own line", {"voratarnfall"}, base_release, lines + target, true, right},
      {"expansion: the base game's", {"voratarnfall"}, base_release, target, true, wrong},
      {"both editions", {"vora", "voratarnfall"}, newer, target, true, right},
      {"nothing installed", {}, {}, target, true, wrong},
      {"nothing installed, empty target", {}, {}, "\r\n", true, right},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    TestMachine machine;
    machine.write_data();
    for (const std::string& edition : c.installed)
      machine.install(edition, c.release);
    write_file(machine.user_folder / "maps.txt", "");
    write_file(machine.data / "targetvoraver.txt", c.target);
    if (!c.list)
      fs::remove(machine.data / "original vora galaxies.txt");
    Program program(machine, "/x");  // examined only when the release is right
    EXPECT_EQ(program.run([&] { load_form(program.form); }), 1);
    // Why there is no release comes before the message that ends the program.
    const bool explained = c.installed.empty() && c.reported == wrong;
    ASSERT_EQ(program.screen.messages.size(), explained ? 2u : 1u);
    if (explained) {
      EXPECT_TRUE(program.screen.messages[0].starts_with("No game was found: the game is not"));
    }
    EXPECT_EQ(program.screen.messages.back().substr(0, c.reported.size()), c.reported);
  }
}

TEST(Startup, SaysWhyTheGameHasNoRelease) {
  const struct {
    const char *edition, *executable;
    bool missing;
    const char* reason;
  } cases[] = {
      {"vora", "Vorakai.exe", true, "cannot read it: the file is missing"},
      {"vora", "Vorakai.exe", false, "it is no program with a version"},
      {"voratarnfall", "Vorakai Tarnfall.exe", true, "cannot read it: the file is missing"},
  };
  for (const auto& c : cases) {
    TestMachine machine;
    machine.write_data();
    install(machine, c.edition);
    const fs::path path = machine.drive_c / "Games" / c.edition / c.executable;
    fs::remove(path);
    if (!c.missing)
      write_file(path, "MZ");
    Program program(machine);
    EXPECT_EQ(program.run([&] { load_form(program.form); }), 1);
    ASSERT_EQ(program.screen.messages.size(), 2u);
    EXPECT_EQ(program.screen.messages[0], "The game's release is not known: C:\\Games\\" +
                                              std::string(c.edition) + "\\" + c.executable + ": " +
                                              c.reason);
    EXPECT_TRUE(program.screen.messages[1].starts_with("found vora version ::"));
    EXPECT_TRUE(program.screen.errors.empty());
  }
}

TEST(Startup, NothingToWorkOnIsTrouble) {
  for (const bool templates : {false, true}) {
    TestMachine machine;
    if (templates)
      write_file(machine.data / "vnewstruct0.txt", "MAP\r\nversion 4\r\n");
    Program program(machine, "/silent");
    EXPECT_EQ(program.run([&] { load_form(program.form); }), templates ? 0 : 1);
    EXPECT_TRUE(program.screen.messages.empty());
    EXPECT_EQ(program.screen.errors.back().starts_with("Nothing was done: "), !templates);
  }
}

// What is wrong with the data files is reported, and the run goes on; only a missing list is no
// reason for another exit status.
TEST(Startup, ReportsDataFilesThatItCannotUse) {
  constexpr std::uintmax_t too_large = std::uintmax_t{2} << 30;
  const char list[] = "original vora galaxies.txt";
  const struct {
    const char* file;
    bool missing, debugmode;
    const char* reported;
    int status;
  } cases[] = {{list, true, false, "is missing", 0},
               {list, false, false, "larger than 1 GiB", 1},
               {"targetvoraver.txt", false, false, "larger than 1 GiB", 1},
               {"info.txt", false, true, "cannot write it", 1}};
  for (const auto& c : cases) {
    TestMachine machine;
    machine.write_data();
    install(machine, "vora");
    write_file(machine.user_folder / "settings.txt", "");
    if (c.debugmode)
      set_debug(machine);
    if (c.missing)
      fs::remove(machine.data / c.file);
    else if (c.debugmode)
      fs::create_directory(machine.data / c.file);
    else
      fs::resize_file((write_file(machine.data / c.file, ""), machine.data / c.file), too_large);
    Program program(machine, "/silent");
    apply_layout(program.form);
    const int status = program.run([&] { startup(program.form); });
    SCOPED_TRACE(c.file);
    const std::vector<std::string>& errors = program.screen.errors;
    ASSERT_GE(errors.size(), 1u);
    EXPECT_NE(errors[0].find(c.reported), std::string::npos) << errors[0];
    EXPECT_NE(errors[0].find(c.file), std::string::npos) << errors[0];
    if (std::string(c.file) != "targetvoraver.txt") {
      EXPECT_EQ(errors.size(), 1u);
      EXPECT_EQ(status, c.status);
    }
    EXPECT_EQ(program.form.trouble, c.status == 1);
  }
}

TEST(Startup, AUserFolderThatCannotBeFoundIsTrouble) {
  const TestMachine machine;
  auto system = std::make_unique<FakeSystem>();
  system->folder = {FolderPath::does_not_exist, ""};
  Program program(machine.files(), std::move(system));
  apply_layout(program.form);
  EXPECT_EQ(program.run([&] { startup(program.form); }), Program::returned);
  EXPECT_EQ(program.screen.messages, std::vector<std::string>{"The folder does not exist"});
  EXPECT_TRUE(program.form.trouble);
  EXPECT_TRUE(program.screen.errors.empty());  // the system does not say why there is no game
}
