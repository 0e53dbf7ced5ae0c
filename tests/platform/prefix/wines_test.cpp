// Wine prefixes in the form that each Wine gives them.
#include "app/installation.h"
#include "platform/os_version.h"
#include "platform/prefix/prefix_files.h"
#include "platform/prefix/prefix_system.h"
#include "platform/registry_and_folders.h"
#include "tests/support/prefix/machine_of.h"

#include <gtest/gtest.h>

#include <sys/xattr.h>

namespace fs = std::filesystem;

TEST(Wines, SayTheSameOfTheMachine) {
  const std::pair<const char*, const char*> cases[] = {{"wine-8", "win7"},
                                                       {"wine-10", "Win7+ x64?"}};
  for (const auto& [wine, windows] : cases) {
    TestMachine machine;
    for (const char* file : {"system.reg", "user.reg"})
      fs::copy_file(fs::path(MACHINES) / wine / file, machine.prefix / file,
                    fs::copy_options::overwrite_existing);
    machine.install("vora", {1, 2, 3, 4});
    PrefixFiles files(machine_of(machine));
    PrefixSystem system(machine_of(machine), "");
    SCOPED_TRACE(wine);
    EXPECT_EQ(system.environment("windir"), "C:\\windows");
    EXPECT_TRUE(is64bit(system, files, system_drive(system)));
    EXPECT_TRUE(game_is_registered(system, files));
    EXPECT_EQ(getosshortname(system), windows);
    EXPECT_EQ(system.environment("PROCESSOR_ARCHITECTURE"), "AMD64");
    EXPECT_EQ(system.environment("PROCESSOR_IDENTIFIER"),
              "AMD64 Family 26 Model 2 Stepping 1, AuthenticAMD");
    EXPECT_EQ(system.environment("PROCESSOR_LEVEL"), "26");
    EXPECT_EQ(system.environment("PROCESSOR_REVISION"), "0201");
    EXPECT_EQ(system.environment("NUMBER_OF_PROCESSORS"), "2");
    EXPECT_EQ(system.environment("OS"), "Windows_NT");
    EXPECT_EQ(system.folder_path(28 | 0x8000).path, "C:\\users\\player\\AppData\\Local");
    EXPECT_EQ(system.folder_path(5 | 0x8000).path, "C:\\users\\player\\Documents");
  }
}

// Wine 10 marks a file that it makes as shown, in an extended attribute that both Wines heed.
TEST(Wines, SayWhichNamesWithADotAreHidden) {
  const std::pair<const char*, const char*> cases[] = {
      {".a.galaxy", nullptr}, {".b.galaxy", "0x0"}, {".c.galaxy", "0x2"}, {".d.galaxy", "0x4"},
      {".e.galaxy", "x"},     {".f.galaxy", "0x1"}, {"g.galaxy", nullptr}};
  TestMachine machine;
  const fs::path folder = machine.drive_c / "dots";
  for (const auto& [name, attributes] : cases) {
    write_file(folder / name, name);
    fs::create_directory(folder / (std::string(name) + ".folder"));
    if (!attributes)
      continue;
    for (const fs::path& path : {folder / name, folder / (std::string(name) + ".folder")})
      if (::setxattr(path.c_str(), "user.DOSATTRIB", attributes, std::string(attributes).size(),
                     0) != 0)
        GTEST_SKIP() << "no extended attributes here";
  }
  for (const char* setting : {"n", "Yes"}) {
    PrefixSystem(machine_of(machine), "")
        .reg_write("HKCU\\Software\\Wine\\ShowDotFiles", setting, "REG_SZ");
    PrefixFiles files(machine_of(machine));
    std::string listed, found, read;
    const auto entries = files.list("C:\\dots", "*.galaxy");
    ASSERT_TRUE(bool(entries));
    for (const Entry& entry : *entries)
      listed += entry.folder ? "" : entry.name.substr(0, 2) + " ";
    for (const auto& [name, attributes] : cases) {
      const std::string path = "C:\\dots\\" + std::string(name);
      if (!files.lookup(path, Match::files)->empty())
        found += std::string(name).substr(0, 2) + " ";
      if (files.read(path))
        read += std::string(name).substr(0, 2) + " ";
    }
    const std::string shown = *setting == 'n' ? ".b .e .f g. " : ".a .b .e .f g. ";
    EXPECT_EQ(listed, shown);
    EXPECT_EQ(found, shown);
    EXPECT_EQ(read, shown);
  }
}
