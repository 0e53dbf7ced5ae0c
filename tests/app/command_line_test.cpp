// Which arguments are taken.
#include "app/command_line.h"

#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

TEST(CommandLine, KnowsTheSilentRunInFourForms) {
  const struct {
    const char* arguments;
    bool silent;
    std::vector<std::string> rejected;  // the piece
  } cases[] = {
      {"", false, {}},
      {"/silent", true, {}},
      {"-silent", true, {}},
      {"/S", true, {}},
      {"-s", true, {}},
      {"/SILENT -S", true, {}},
      {"/s  -s", true, {""}},
      {" /s", false, {""}},
      {"/s ", true, {""}},
      {"/x", false, {"/x"}},
      {"/s /Xyz", true, {"/Xyz"}},
      {"s", false, {"s"}},
      {" ", false, {""}},
      {"/s\t", false, {"/s\t"}},
  };
  TestMachine machine;
  for (auto c : cases) {
    Program program(machine, c.arguments);
    Form1& form = program.form;
    form.Label19.set_visible(false);
    const int status = program.run([&] { examine_arguments(form); });
    EXPECT_EQ(status, c.rejected.empty() ? Program::returned : 1) << c.arguments;
    for (std::string& piece : c.rejected)
      piece.insert(0, "Invalid argument: ");
    EXPECT_EQ(program.screen.messages, c.rejected);
    EXPECT_EQ(form.silentmode, c.silent) << c.arguments;
    EXPECT_EQ(form.Label19.visible(), c.silent);
    EXPECT_EQ(form.Command1.enabled() && form.Command5.enabled(), !c.silent);
    EXPECT_TRUE(form.Command6.enabled());
  }
}
