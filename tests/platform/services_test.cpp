// The program's own operations on top of the machine.
#include "platform/services.h"

#include "platform/os_version.h"
#include "tests/support/fake_system.h"
#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

TEST(Services, RegistryAccessKnowsThreeModesInAnyCase) {
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

TEST(Services, SpecialFoldersTellTwoOfTheirFailures) {
  const struct {
    std::uint32_t status;
    const char* folder;
    std::vector<std::string> messages;
  } cases[] = {
      {0, "C:\\folder", {}},
      {1, "", {"The folder does not exist"}},
      {0x80070057, "", {"An invalid folder ID was specified"}},
      {0x80004005, "", {}},
  };
  for (const auto& c : cases) {
    FakeSystem system;
    system.folder.status = c.status;
    std::vector<std::string> told;
    const ShowMessage tell = [&](const std::string& text) { told.push_back(text); };
    EXPECT_EQ(getmydocs(system, tell), c.folder);
    EXPECT_EQ(system.asked_folder, 32773u);
    EXPECT_EQ(told, c.messages);
    EXPECT_EQ(getlocalappdata(system, tell), c.folder);
    EXPECT_EQ(system.asked_folder, 32796u);
  }
}

TEST(Services, OwnFolderEndsInOneBackslash) {
  FakeSystem system;
  EXPECT_EQ(App_Path(system), "C:\\program\\");
  system.own = "C:\\";
  EXPECT_EQ(App_Path(system), "C:\\");
}

TEST(Services, AMachineHas64BitsByItsSecondProgramFolder) {
  TestMachine machine;
  Program program(machine);
  FakeSystem system;
  EXPECT_TRUE(is64bit(system, program.files, "C:"));
  EXPECT_FALSE(is64bit(system, program.files, "Z:"));
  EXPECT_FALSE(is64bit(system, program.files, ""));
  system.version->platform = 1;
  EXPECT_FALSE(is64bit(system, program.files, "C:"));
  system.version.reset();
  EXPECT_FALSE(is64bit(system, program.files, "C:"));
}

TEST(Services, ReleasesAreFourUnsignedNumbers) {
  FakeSystem system;
  EXPECT_EQ(getexeversion(system, "any"), "");
  system.product = ProductVersion{0x00010002, 0x8000FFFF};
  EXPECT_EQ(getexeversion(system, "any"), "1.2.32768.65535");
  system.product = ProductVersion{0, 0};
  EXPECT_EQ(getexeversion(system, "any"), "0.0.0.0");
}
