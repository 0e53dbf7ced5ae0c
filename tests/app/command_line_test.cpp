// Which arguments are taken.
#include "app/command_line.h"

#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

TEST(CommandLine, KnowsTheSilentRunInFourForms) {
  const struct {
    const char* arguments;
    bool silent;
    const char* rejected;  // the piece, null when all are taken
  } cases[] = {
      {"", false, nullptr},  {"/silent", true, nullptr}, {"-silent", true, nullptr},
      {"/S", true, nullptr}, {"-s", true, nullptr},      {"/SILENT -S", true, nullptr},
      {"/s  -s", true, ""},  {" /s", false, ""},         {"/s ", true, ""},
      {"/x", false, "/x"},   {"/s /Xyz", true, "/Xyz"},  {"s", false, "s"},
      {" ", false, ""},      {"/s\t", false, "/s\t"},
  };
  TestMachine machine;
  for (const auto& c : cases) {
    Program program(machine, c.arguments);
    Form1& form = program.form;
    form.Label19.set_visible(false);
    EXPECT_EQ(will_be_silent(*program.own_system),
              c.silent || std::string_view(c.arguments) == " /s")
        << c.arguments;
    const int status = program.run([&] { examine_arguments(form); });
    EXPECT_EQ(status, c.rejected ? 1 : Program::returned) << c.arguments;
    EXPECT_EQ(program.screen.messages,
              c.rejected ? std::vector{"Invalid argument: " + std::string(c.rejected)}
                         : std::vector<std::string>());
    ASSERT_EQ(program.screen.errors.size(), c.rejected ? 1u : 0u);
    if (c.rejected) {
      const std::string& said = program.screen.errors[0];
      EXPECT_TRUE(said.starts_with("Invalid argument: "));
      EXPECT_NE(said.find("\r\nUsage: vora-map-updater [/silent] (see "), std::string::npos);
    }
    EXPECT_EQ(form.silentmode, c.silent) << c.arguments;
    EXPECT_EQ(form.Label19.visible(), c.silent);
    EXPECT_EQ(form.Command1.enabled() && form.Command5.enabled(), !c.silent);
    EXPECT_TRUE(form.Command6.enabled());
  }
}
