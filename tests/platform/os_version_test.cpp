// The version query's answers and what they are called.
#include "platform/os_version.h"

#include "tests/support/fake_system.h"

#include <gtest/gtest.h>

TEST(OsVersion, NamesEveryRowOfItsTable) {
  const struct {
    std::uint32_t platform, major, minor;
    const char* name;
  } cases[] = {
      {0, 3, 10, "32s"},    {1, 4, 0, "95"},         {1, 4, 90, "ME"},        {1, 4, 10, "98"},
      {1, 9, 90, "ME"},     {2, 3, 0, "NT3"},        {2, 3, 1, "NT3.1"},      {2, 3, 5, "NT3.5"},
      {2, 3, 51, "NT3.51"}, {2, 3, 10, ""},          {2, 4, 7, "NT 4"},       {2, 5, 0, "Win2000"},
      {2, 5, 1, "WinXP"},   {2, 5, 2, "WinXP x64 "}, {2, 5, 3, "Winxp x64?"}, {2, 6, 0, "WinVista"},
      {2, 6, 1, "win7"},    {2, 6, 2, "Win7+ x64?"}, {2, 2, 0, ""},           {2, 10, 0, ""},
      {3, 6, 1, ""},
  };
  for (const auto& c : cases) {
    FakeSystem system;
    system.version = OsVersion{c.platform, c.major, c.minor};
    EXPECT_EQ(getosshortname(system), c.name) << c.platform << " " << c.major << "." << c.minor;
    EXPECT_EQ(isvista(system), c.platform == 2 && c.major == 6 && c.minor == 0);
    EXPECT_EQ(iswin7(system), c.platform == 2 && c.major == 6 && c.minor == 1);
  }
}

TEST(OsVersion, IsNothingWhenTheQueryFails) {
  FakeSystem system;
  system.version.reset();
  EXPECT_EQ(getosshortname(system), "");
  EXPECT_FALSE(isvista(system));
  EXPECT_FALSE(iswin7(system));
}
