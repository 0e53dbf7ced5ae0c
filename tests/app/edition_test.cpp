// What selecting an edition by its button switches.
#include "app/edition.h"

#include "tests/support/test_machine.h"
#include "ui/handlers.h"

#include <gtest/gtest.h>

namespace {

const std::string user_space = "C:\\users\\me\\AppData\\Local\\Kettlewick Games\\Vorakai\\";
const std::string expansion_space =
    "C:\\users\\me\\Documents\\My Games\\Kettlewick Games\\Vorakai Tarnfall";

// A machine with both editions.
class SelectEdition : public testing::Test {
protected:
  SelectEdition() {
    machine.write_data();
    machine.install("vora", {1, 2, 3, 4});
    machine.install("voratarnfall", {5, 6, 7, 8});
    write_file(machine.user_folder / "maps/a.galaxy", "");
    write_file(machine.program / "first", "");
  }

  void select(Program& program, Edition edition) {
    program.run([&] { load_form(program.form); });
    before = read_file(machine.data / "info.txt");
    program.run([&] { selectedition(program.form, edition); });
  }

  std::string info_added() const {
    return read_file(machine.data / "info.txt").substr(before.size());
  }

  TestMachine machine;
  std::string before;  // what start-up wrote into the diagnostic file
};

}  // namespace

TEST_F(SelectEdition, TheBaseEditionFallsBackToTheOwnFolder) {
  const std::string own = z_path(machine.program) + "\\";
  for (const bool userfile : {false, true}) {
    if (userfile)
      write_file(machine.user_folder / "settings.txt", "");
    Program program(machine);
    select(program, Edition::base);
    const Form1& form = program.form;
    EXPECT_EQ(form.edition, "v");
    EXPECT_EQ(form.pathlist[0], user_space);
    EXPECT_EQ(form.pathlist[1], userfile ? "C:\\Games\\vora\\" : own);
    EXPECT_EQ(form.Command4.tooltip(), form.pathlist[1]);
    EXPECT_EQ(form.foundversion, "1.2.3.4");
    EXPECT_FALSE(form.Command6.enabled() || form.Command7.enabled());
    EXPECT_EQ(form.Dir1.path() + "\\", user_space);
    EXPECT_EQ(form.originalmaps[0], "own.galaxy");
  }
}

TEST_F(SelectEdition, TheExpansionMovesToTheDocuments) {
  for (const char* windows : {"6.3", "6.1"}) {
    machine.set_version(windows);
    Program program(machine);
    select(program, Edition::expansion);
    const Form1& form = program.form;
    EXPECT_EQ(form.edition, "t");
    EXPECT_EQ(form.homefolder, "C:\\users\\me\\Documents");
    EXPECT_EQ(form.pathlist[0], expansion_space);
    EXPECT_EQ(form.pathlist[1],
              windows == std::string("6.1") ? expansion_space : "C:\\Games\\voratarnfall\\");
    EXPECT_EQ(form.foundversion, "5.6.7.8");
    // The user space folder is missing: the list stays, and nobody is told.
    EXPECT_EQ(form.Dir1.path(), z_path(machine.data));
    EXPECT_TRUE(program.screen.messages.empty());
  }
}

TEST_F(SelectEdition, DebugModeAddsToTheDiagnosticFile) {
  write_file(machine.data / "targetvoraver.txt", "\r\n\r\n\r\n\r\n\r\n\r\ndebug");
  write_file(machine.user_folder / "settings.txt", "");
  const std::string own = z_path(machine.program) + "\\";
  Program base(machine);
  select(base, Edition::base);
  EXPECT_EQ(info_added(),
            "C:\\Games\\vora\\\r\n" + user_space + "\r\nC:\\users\\me\\AppData\\Local\r\n" + own +
                "\r\n\r\nVorakai.exe\r\nsettings.txt\r\nfirst\r\nC:\\Games\\vora\\\r\n"
                "1.2.3.4\r\n");
  Program expansion(machine);
  select(expansion, Edition::expansion);
  EXPECT_EQ(info_added(), "C:\\Games\\voratarnfall\\\r\n" + expansion_space +
                              "\r\nC:\\users\\me\\Documents\r\n" + own +
                              "\r\n\r\nfirst\r\nC:\\Games\\voratarnfall\\\r\n5.6.7.8\r\n");
}
