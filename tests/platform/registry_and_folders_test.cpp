// The registry, special folders, versions and releases, on every machine.
#include "platform/registry_and_folders.h"

#include "platform/executable_release.h"
#include "platform/os_version.h"
#include "tests/support/fake_system.h"
#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

TEST(Registry, AccessKnowsThreeModesInAnyCase) {
  FakeSystem system;
  system.registry["K\\Path"] = "here";
  EXPECT_EQ(regaccess(system, "READ", "K\\Path", "Path", "string"), "here");
  EXPECT_EQ(regaccess(system, "read", "K\\Other", "", ""), "");
  EXPECT_EQ(regaccess(system, "fetch", "K\\Path", "", ""), "");
  EXPECT_EQ(regaccess(system, "Write", "K\\New", "data", "REG_SZ"), "");
  EXPECT_EQ(system.registry["K\\New"], "REG_SZ:data");
  EXPECT_EQ(regaccess(system, "delete", "K\\Path", "", ""), "");
  EXPECT_FALSE(system.registry.contains("K\\Path"));
}

TEST(SpecialFolders, ReportTwoOfTheirFailures) {
  FakeSystem system;
  std::string reported;
  const ShowMessage tell = [&](const std::string& text) { reported += text + "\n"; };
  EXPECT_EQ(getmydocs(system, tell), "C:\\folder");
  EXPECT_EQ(system.asked_folder, 0x8005u);
  for (const std::uint32_t status : {1u, 0x80070057u, 0x80004005u}) {
    system.folder.status = status;
    EXPECT_EQ(getlocalappdata(system, tell), "");
    EXPECT_EQ(system.asked_folder, 0x801Cu);
  }
  EXPECT_EQ(reported, "The folder does not exist\nAn invalid folder ID was specified\n");
}

TEST(SpecialFolders, OwnFolderEndsInOneBackslash) {
  FakeSystem system;
  EXPECT_EQ(App_Path(system), "C:\\program\\");
  system.own = "C:\\";
  EXPECT_EQ(App_Path(system), "C:\\");
}

TEST(OsVersion, AMachineHas64BitsByItsSecondProgramFolder) {
  TestMachine machine;
  Program program(machine);
  FakeSystem system;
  EXPECT_TRUE(is64bit(system, program.files, "C:"));
  EXPECT_FALSE(is64bit(system, program.files, "Z:"));
  EXPECT_FALSE(is64bit(system, program.files, ""));
  system.version->platform = 1;
  EXPECT_FALSE(is64bit(system, program.files, "C:"));
}

TEST(OsVersion, TheFirstRowThatFitsNamesAVersion) {
  FakeSystem system;
  const auto name = [&](std::uint32_t platform, std::uint32_t major, std::uint32_t minor) {
    system.version = OsVersion{platform, major, minor};
    return getosshortname(system);
  };
  EXPECT_EQ(name(1, 4, 0) + name(1, 9, 90) + name(1, 4, 10), "95ME98");
  EXPECT_EQ(name(2, 5, 2) + name(2, 5, 3) + name(2, 6, 2), "WinXP x64 Winxp x64?Win7+ x64?");
  EXPECT_EQ(name(2, 3, 10) + name(2, 10, 0) + name(3, 6, 1), "");
  EXPECT_FALSE(name(2, 6, 1).empty() || isvista(system) || !iswin7(system));
  system.version.reset();
  EXPECT_EQ(getosshortname(system), "");
  EXPECT_FALSE(isvista(system) || iswin7(system));
}

TEST(ExecutableRelease, ReleasesAreFourUnsignedNumbers) {
  FakeSystem system;
  EXPECT_EQ(getexeversion(system, "any"), "");
  system.product = ProductVersion{0x00010002, 0x8000FFFF};
  EXPECT_EQ(getexeversion(system, "any"), "1.2.32768.65535");
}
