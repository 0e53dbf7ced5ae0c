// The list of the game's own maps.
#include "convert/original_maps.h"

#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

TEST(OriginalMaps, AMissingListIsRememberedForGood) {
  TestMachine machine;
  Program program(machine);
  Form1& form = program.form;
  const auto list = machine.data / "original vora galaxies.txt";

  write_file(list, "Alpha.galaxy\r\nBeta.galaxy\r\n");
  loadoriginalmaps(form);
  EXPECT_FALSE(form.missingdata);
  ASSERT_EQ(form.originalmaps.size(), 2u);
  EXPECT_EQ(form.originalmaps[1], "Beta.galaxy");

  std::filesystem::remove(list);
  loadoriginalmaps(form);
  EXPECT_TRUE(form.missingdata);
  ASSERT_EQ(form.originalmaps.size(), 1u);
  EXPECT_EQ(form.originalmaps[0], "");

  write_file(list, "Alpha.galaxy\r\n");
  loadoriginalmaps(form);
  EXPECT_EQ(form.originalmaps[0], "");
}
