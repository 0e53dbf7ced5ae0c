// Version, variables, special folders and executables of a Wine prefix.
#include "platform/prefix/prefix_system.h"

#include "tests/support/prefix/machine_of.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace fs = std::filesystem;

TEST(PrefixSystem, TheVersionIsHeldAtSixTwo) {
  const struct {
    const char* text;
    std::uint32_t major, minor;
  } cases[] = {{"6.3", 6, 2}, {"10.0", 6, 2}, {"6.1", 6, 1}, {"5.2", 5, 2}, {"4.0", 4, 0}};
  TestMachine machine;
  for (const auto& c : cases) {
    machine.set_version(c.text);
    PrefixSystem system(machine_of(machine), "");
    const auto version = system.os_version();
    ASSERT_TRUE(version);
    EXPECT_EQ(version->platform, 2u);
    EXPECT_EQ(version->major, c.major) << c.text;
    EXPECT_EQ(version->minor, c.minor) << c.text;
  }
  for (const char* text : {"", "6", "6.", ".1", "x.1", "99999999999.1"}) {
    machine.set_version(text);
    EXPECT_FALSE(PrefixSystem(machine_of(machine), "").os_version()) << text;
  }
}

TEST(PrefixSystem, VariablesComeFromTheProcessThenTheRegistry) {
  TestMachine machine;
  write_file(
      machine.prefix / "system.reg",
      "WINE REGISTRY Version 2\n\n"
      "[Software\\\\Microsoft\\\\Windows NT\\\\CurrentVersion]\n\"SystemRoot\"=\"C:\\\\win\"\n\n"
      "[System\\\\CurrentControlSet\\\\Control\\\\Session Manager\\\\Environment]\n"
      "\"windir\"=str(2):\"%SystemRoot%\"\n\"Sum\"=\"%windir%;%Sum%;100%;%Unset%x\"\n"
      "\"VORA_TEST\"=\"registry\"\n\"COUNT\"=dword:00000004\n");
  PrefixSystem system(machine_of(machine), "");
  EXPECT_EQ(system.environment("windir"), "C:\\win");
  EXPECT_EQ(system.environment("WINDIR"), "C:\\win");
  EXPECT_EQ(system.environment("Sum"), "%SystemRoot%;%windir%;%Sum%;100%;%Unset%x;100%;%Unset%x");
  EXPECT_EQ(system.environment("unset"), "");
  EXPECT_EQ(system.environment("VORA_TEST"), "registry");
  setenv("VORA_TEST", "process", 1);
  EXPECT_EQ(system.environment("VORA_TEST"), "process");
  unsetenv("VORA_TEST");
}

TEST(PrefixSystem, SpecialFoldersAreMadeWhenMissing) {
  constexpr std::uint32_t create = 0x8000, local = 28, personal = 5;
  TestMachine machine;
  fs::remove_all(machine.drive_c / "users");
  PrefixSystem system(machine_of(machine), "");
  EXPECT_EQ(system.folder_path(local).status, FolderPath::does_not_exist);
  const FolderPath made = system.folder_path(local | create);
  EXPECT_EQ(made.status, FolderPath::ok);
  EXPECT_EQ(made.path, "C:\\users\\me\\AppData\\Local");
  EXPECT_TRUE(fs::is_directory(machine.drive_c / "users/me/AppData/Local"));
  EXPECT_EQ(system.folder_path(99 | create).status, FolderPath::invalid_identifier);

  write_file(machine.drive_c / "users/me/Documents", "a file");
  EXPECT_EQ(system.folder_path(personal | create).status, FolderPath::does_not_exist);
  fs::remove(machine.prefix / "user.reg");
  EXPECT_EQ(PrefixSystem(machine_of(machine), "").folder_path(local | create).status,
            FolderPath::failed);
}

TEST(PrefixSystem, ReadsReleasesOfExecutables) {
  TestMachine machine;
  machine.install("vora", {1, 2, 3, 4});
  write_file(machine.drive_c / "empty.exe", "");
  PrefixSystem system(machine_of(machine), "");
  EXPECT_EQ(system.product_version("c:\\games\\VORA\\vorakai.exe")->high, 0x00010002u);
  for (const char* path : {"C:\\Games\\vora", "C:\\Games\\none.exe", "C:\\empty.exe", ""})
    EXPECT_FALSE(system.product_version(path)) << path;
}
