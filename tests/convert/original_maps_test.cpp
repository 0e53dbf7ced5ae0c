// The list of the game's own maps.
#include "convert/original_maps.h"

#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

TEST(OriginalMaps, AMissingListIsRememberedForGood) {
  TestMachine machine;
  Program program(machine);
  const auto list = machine.data / "original vora galaxies.txt";
  for (const bool missing : {false, true, false}) {
    const bool ever = program.form.missingdata || missing;
    std::filesystem::remove(list);
    if (!missing)
      write_file(list, "Alpha.galaxy\r\nBeta.galaxy\r\n");
    loadoriginalmaps(program.form);
    EXPECT_EQ(program.form.missingdata, ever);
    ASSERT_EQ(program.form.originalmaps.size(), ever ? 1u : 2u);
    EXPECT_EQ(program.form.originalmaps[0], ever ? "" : "Alpha.galaxy");
  }
}
