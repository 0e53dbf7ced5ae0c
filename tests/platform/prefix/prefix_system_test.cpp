// Version, variables, special folders and executables of a Wine prefix, and signals.
#include "platform/prefix/prefix_system.h"

#include "discover/search.h"
#include "tests/support/prefix/machine_of.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <iostream>

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
      "\"windir\"=str(2):\"%SystemRoot%\"\n"
      "\"Sum\"=str(2):\"%windir%;%Sum%;%Text%;100%;%Unset%x\"\n"
      "\"Text\"=\"%windir%\"\n\"VORA_TEST\"=\"registry\"\n");
  PrefixSystem system(machine_of(machine), "");
  EXPECT_EQ(system.environment("windir"), "C:\\win");
  EXPECT_EQ(system.environment("WINDIR"), "C:\\win");
  EXPECT_EQ(system.environment("Sum"), "C:\\win;%Sum%;%windir%;100%;%Unset%x");
  EXPECT_EQ(system.environment("unset"), "");
  EXPECT_EQ(system.environment("VORA_TEST"), "registry");
  setenv("VORA_TEST", "%windir%", 1);
  EXPECT_EQ(system.environment("VORA_TEST"), "%windir%");
  unsetenv("VORA_TEST");
}

TEST(PrefixSystem, ReadsTextInTheCodePageOfTheRegistry) {
  constexpr char current[] = "System\\CurrentControlSet\\Control\\Nls\\CodePage";
  constexpr char first[] = "System\\ControlSet001\\Control\\Nls\\CodePage";
  const struct {
    const char *key, *page, *text, *decoded;
  } cases[] = {
      {current, "", "\x80\xC9", "€É"},         {current, "1252", "\xC3\x89", "É"},
      {current, "1251", "\xC9", "Й"},          {first, "1251", "\xC9", "Й"},
      {first, "932", "\x83\x5Cx\x83", "ソx�"}, {first, "65001", "a\xC9z", "a�z"},
      {current, "none", "\x81\xC9", "�É"},
  };
  for (const auto& c : cases) {
    TestMachine machine;
    if (*c.page)
      machine.set_registry(c.key, "ACP", c.page);
    EXPECT_EQ(PrefixSystem(machine_of(machine), "").decode(c.text), c.decoded) << c.page;
  }
}

// The keys and values as Wine writes them.
TEST(PrefixSystem, ExpandsTheVariablesThatWindowsMakesItself) {
  constexpr char current[] = "Software\\Microsoft\\Windows\\CurrentVersion";
  constexpr char profiles[] = "Software\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList";
  constexpr char session[] = "System\\CurrentControlSet\\Control\\Session Manager\\Environment";
  TestMachine machine;
  for (const char* name :
       {"ProgramFilesDir", "ProgramFilesDir (x86)", "CommonFilesDir", "CommonFilesDir (x86)"})
    machine.set_registry(current, name, name);
  machine.set_registry(profiles, "ProgramData", "C:\\ProgramData");
  machine.set_registry(profiles, "Public", "C:\\users\\Public");
  machine.set_registry(std::string(profiles) + "\\S-1-5-21-0-0-0-1000", "ProfileImagePath",
                       "C:\\me");
  machine.set_registry(session, "ProgramData", "set by the machine");
  machine.set_registry(session, "TEMP", "of the machine");
  PrefixSystem system(machine_of(machine), "");
  const auto expanded = [&](const std::string& text) {
    EXPECT_TRUE(system.reg_write("HKCU\\Test\\Path", text, "REG_EXPAND_SZ"));
    return system.reg_read("HKCU\\Test\\Path").value_or("none");
  };
  EXPECT_EQ(expanded("%UserProfile%"), "C:\\me");
  for (const char* name : {"USERPROFILE", "USERNAME", "APPDATA", "LOCALAPPDATA", "HOMEPATH"})
    system.reg_write(std::string("HKCU\\Volatile Environment\\") + name, "of the session", "");
  system.reg_write("HKCU\\Environment\\TEMP", "of the user", "");

  const std::pair<const char*, const char*> cases[] = {
      {"SystemDrive", "C:"},
      {"SystemRoot", "C:\\windows"},
      {"windir", "C:\\windows"},
      {"ProgramFiles", "ProgramFilesDir"},
      {"ProgramW6432", "ProgramFilesDir"},
      {"ProgramFiles(x86)", "ProgramFilesDir (x86)"},
      {"CommonProgramFiles", "CommonFilesDir"},
      {"CommonProgramW6432", "CommonFilesDir"},
      {"CommonProgramFiles(x86)", "CommonFilesDir (x86)"},
      {"ProgramData", "C:\\ProgramData"},
      {"ALLUSERSPROFILE", "C:\\ProgramData"},
      {"PUBLIC", "C:\\users\\Public"},
      {"USERPROFILE", "of the session"},
      {"USERNAME", "of the session"},
      {"APPDATA", "of the session"},
      {"LOCALAPPDATA", "of the session"},
      {"HOMEPATH", "of the session"},
      {"TEMP", "of the user"}};
  for (const auto& [name, value] : cases) {
    unsetenv(name);
    EXPECT_EQ(expanded(std::string("%") + name + "%\\x"), std::string(value) + "\\x");
  }
  for (const char* text : {"%%", "%\\x%", "%Session\\TEMP%"})
    EXPECT_EQ(expanded(text), text);
}

// Values that each contain the next one twice, and a chain of values deeper than the stack.
TEST(PrefixSystem, HoldsExpansionWithinBounds) {
  for (const auto& [length, twice] : {std::pair(60, true), std::pair(20000, false)}) {
    TestMachine machine;
    std::string text =
        "WINE REGISTRY Version 2\n\n[Environment]\n\"V" + std::to_string(length) + "\"=\"text\"\n";
    for (int i = 0; i < length; ++i) {
      const std::string next = "%V" + std::to_string(i + 1) + "%";
      text += "\"V" + std::to_string(i) + "\"=str(2):\"" + next + (twice ? next : "") + "\"\n";
    }
    write_file(machine.prefix / "user.reg", text);
    const auto size = PrefixSystem(machine_of(machine), "").environment("V0").size();
    EXPECT_TRUE(size > 0 && size < 33000) << size;
  }
}

TEST(PrefixSystem, SpecialFoldersAreMadeWhenMissing) {
  constexpr std::uint32_t create = 0x8000, local = 28, personal = 5;
  TestMachine machine;
  fs::remove_all(machine.drive_c / "users");
  const auto folder = [&](std::uint32_t csidl) {
    return PrefixSystem(machine_of(machine), "").folder_path(csidl);
  };
  EXPECT_EQ(folder(local).status, FolderPath::does_not_exist);
  EXPECT_EQ(folder(local | create).path, "C:\\users\\me\\AppData\\Local");
  EXPECT_TRUE(fs::is_directory(machine.drive_c / "users/me/AppData/Local"));
  EXPECT_EQ(folder(99 | create).status, FolderPath::invalid_identifier);
  write_file(machine.drive_c / "users/me/Documents", "a file");
  EXPECT_EQ(folder(personal | create).status, FolderPath::does_not_exist);
  fs::remove(machine.prefix / "user.reg");
  EXPECT_EQ(folder(local | create).status, FolderPath::failed);

  // Local application data lies in the profile by default.
  write_file(machine.prefix / "user.reg", "WINE REGISTRY Version 2\n\n[Volatile Environment]\n"
                                          "\"USERPROFILE\"=\"C:\\\\users\\\\you\"\n");
  EXPECT_EQ(folder(local | create).path, "C:\\users\\you\\AppData\\Local");
  EXPECT_TRUE(fs::is_directory(machine.drive_c / "users/you/AppData/Local"));
  EXPECT_EQ(folder(personal | create).status, FolderPath::failed);
  machine.set_version("5.2");
  EXPECT_EQ(folder(local | create).path, "C:\\users\\you\\Local Settings\\Application Data");
  // The value that Windows copies to the one of the other folders.
  PrefixSystem(machine_of(machine), "")
      .reg_write("HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders"
                 "\\Local AppData",
                 "%USERPROFILE%\\Elsewhere", "REG_EXPAND_SZ");
  EXPECT_EQ(folder(local | create).path, "C:\\users\\you\\Elsewhere");
}

// A second signal ends the process at once; one that was ignored at the start stays so.
TEST(PrefixSystem, ASignalEndsASearch) {
  const TestMachine machine;
  Program program(machine);
  program.form.pathlist = {"C:", "C:"};
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const auto before = std::signal(signal, SIG_DFL);  // it may have been ignored
    const auto search = [&](int times) {
      program.screen.pending = [&] {
        while (times-- > 0)
          std::raise(signal);
      };
      const int status = program.run([&] { findgalaxies(program.form); });
      if (status == Program::returned)
        std::raise(signal);
      for (const std::string& error : program.screen.errors)
        std::cerr << error;
      std::_Exit(status);
    };
    EXPECT_EXIT(search(1), testing::ExitedWithCode(1),
                "^Interrupted: 0 maps were converted, the rest is as it was\\.$");
    EXPECT_EXIT(search(2), testing::KilledBySignal(signal), "^$");
    std::signal(signal, SIG_IGN);
    EXPECT_EXIT(search(2), testing::ExitedWithCode(Program::returned & 0xFF), "^$");
    std::signal(signal, before);
  }
}
