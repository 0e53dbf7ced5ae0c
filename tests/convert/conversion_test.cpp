// The conversion run: what it leaves on the disk and on the screen.
#include "convert/conversion.h"

#include "convert/originalmaps.h"
#include "tests/support/testmachine.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

using Tree = std::map<std::string, std::string>;

namespace {

// A machine with a folder of maps, and the program about to convert them.
class Conversion : public testing::Test {
protected:
  Conversion() {
    machine.writedata();
    fs::create_directory(maps);
    program.form.edition = "v";
    program.form.Label8.settext("1");
  }

  void add(const std::string& name, const std::string& text) {
    writefile(maps / name, text);
    found(name);
  }

  void found(const std::string& name) { program.form.foundlist.add("C:\\maps", name); }

  // Another run, with nothing found yet and no map there.
  void startover(const char* edition = "v", bool debugmode = false) {
    fs::remove_all(maps);
    program.form.foundlist.clear();
    program.form.edition = edition;
    program.form.debugmode = debugmode;
    program.screen.messages.clear();
  }

  int fix() {
    return program.run([&] {
      loadoriginalmaps(program.form);
      fixgalaxies(program.form);
    });
  }

  TestMachine machine;
  const fs::path maps = machine.drivec / "maps";
  Program program{machine};
};

const Tree converted = {{"a.galaxy", convertedmap}, {"a.galold", oldmap}};

}  // namespace

TEST_F(Conversion, LeavesTheCompanionsOfEachModeBesideAMap) {
  const struct {
    const char* edition;
    bool debugmode;
    Tree left;
  } cases[] = {
      {"v", false, converted},
      {"t", false, {{"a.galaxy", fixedmap}, {"a.galold", oldmap}, {"a.galfix", convertedmap}}},
      {"v", true, {{"a.galaxy", oldmap}, {"a.galtst", convertedmap}}},
      {"t", true, {{"a.galaxy", oldmap}, {"a.galtst", oldmap}}},
  };
  for (const auto& c : cases) {
    startover(c.edition, c.debugmode);
    add("a.galaxy", oldmap);
    EXPECT_EQ(fix(), Program::goeson);
    EXPECT_EQ(tree(maps), c.left) << c.edition << c.debugmode;
    // Again: the map is current now, or in debug mode its companion is overwritten.
    EXPECT_EQ(fix(), Program::goeson);
    EXPECT_EQ(tree(maps), c.left) << c.edition << c.debugmode;
  }
  EXPECT_TRUE(program.screen.messages.empty());
}

TEST_F(Conversion, CountsAndListsWhatItConvertsAndLeavesTheRestAlone) {
  add("current.galaxy", "MAP\r\nversion 4\r\nship Foo\r\n");
  add("newer.galaxy", "MAP\r\nversion 12\r\nship Foo\r\n");
  add("OWN.galaxy", oldmap);
  add("\xC3\x89TOILE.galaxy", oldmap);
  Tree left = tree(maps);
  add("B.GALAXY", oldmap);
  add("a.galaxy", oldmap);
  left.insert({{"B.GALAXY", convertedmap}, {"B.GALold", oldmap}});
  left.insert(converted.begin(), converted.end());
  fix();
  EXPECT_EQ(tree(maps), left);
  EXPECT_EQ(program.form.Text2.text(), "B.GALAXY\r\na.galaxy\r\n");
  EXPECT_EQ(program.form.Label4.text(), "1");
  EXPECT_EQ(program.form.Label8.text(), "2");
}

TEST_F(Conversion, TakesTheVersionFromTheEndOfTheSecondLine) {
  // Whatever the version text holds, it only ever names a template beside the program.
  const struct {
    const char* secondline;
    const char* file;
  } cases[] = {
      {"v 3", "voldstruct3.txt"},  {"v3 ", "voldstruct3 .txt"},
      {"x", "voldstructx.txt"},    {"", "voldstruct.txt"},
      {" ", "voldstruct.txt"},     {"v-1", "voldstruct-1.txt"},
      {"v03", "voldstruct03.txt"}, {"v\\3", "voldstruct\\3.txt"},
      {"v..", "voldstruct...txt"}, {"v\x1Bx", "voldstruct\\x1Bx.txt"},
  };
  fs::remove(machine.data / "voldstruct3.txt");
  for (const auto& c : cases) {
    startover();
    add("a.galaxy", "MAP\r\n" + std::string(c.secondline) + "\r\nend\r\n");
    EXPECT_EQ(fix(), 1);
    ASSERT_EQ(program.screen.messages.size(), 1u);
    EXPECT_NE(program.screen.messages[0].find(c.file), std::string::npos)
        << program.screen.messages[0];
  }
}

TEST_F(Conversion, TellsWhichMapsItCouldNotConvertAndGoesOn) {
  found("vanished.galaxy");
  add("oneline.galaxy", "MAP\r\n");
  add("empty.galaxy", "");
  add("huge.galaxy", "");
  fs::resize_file(maps / "huge.galaxy", Files::largestfile + 1);
  add("taken.galaxy", oldmap);
  fs::create_directories(maps / "taken.GALOLD");
  add("a.galaxy", oldmap);
  EXPECT_EQ(fix(), Program::goeson);
  fs::remove(maps / "huge.galaxy");
  EXPECT_EQ(tree(maps), (Tree{{"oneline.galaxy", "MAP\r\n"},
                              {"empty.galaxy", ""},
                              {"taken.galaxy", oldmap},
                              {"a.galaxy", convertedmap},
                              {"a.galold", oldmap}}));
  EXPECT_EQ(program.form.Text2.text(), "a.galaxy\r\n");
  EXPECT_TRUE(program.form.trouble);
  ASSERT_EQ(program.screen.messages.size(), 1u);
  EXPECT_EQ(program.screen.messages[0],
            "These maps could not be converted and were left alone:\r\n"
            "C:\\maps\\vanished.galaxy: cannot read it: the file is missing\r\n"
            "C:\\maps\\oneline.galaxy: cannot convert it: it has no second line\r\n"
            "C:\\maps\\empty.galaxy: cannot convert it: it has no second line\r\n"
            "C:\\maps\\huge.galaxy: cannot read it: it is larger than 1 GiB\r\n"
            "C:\\maps\\taken.galaxy: cannot convert it: a folder has the name taken.galold");
}

TEST_F(Conversion, KeepsAnEarlierBackupThatOnlyHasTheSameSize) {
  const std::string other(std::string(oldmap).size(), 'x');
  add("a.galaxy", oldmap);
  writefile(maps / "a.galold", other);
  fix();
  EXPECT_EQ(tree(maps),
            (Tree{{"a.galaxy", convertedmap}, {"a.galold", oldmap}, {"a.galold2", other}}));
}

TEST_F(Conversion, ATemplateErrorEndsTheProgramAndLosesNothing) {
  writefile(machine.data / "vnewstruct3.txt", "MAP\r\nver$1\r\nversion 4\r\nship$0\r\n");
  writefile(machine.data / "tnewstructfix4.txt", "MAP\r\n");
  const Tree untouched = {{"a.galaxy", oldmap}, {"b.galaxy", oldmap}};
  const Tree backedup = {{"a.galaxy", oldmap}, {"a.galold", oldmap}, {"b.galaxy", oldmap}};
  const struct {
    const char* edition;
    bool debugmode;
    Tree left;
    const char* told;
  } cases[] = {
      {"t", false, backedup, "tnewstructfix4.txt: its section count is 0 or below: MAP"},
      {"v", true, untouched, "vnewstruct3.txt"},
      {"v", false, backedup,
       "C:\\maps\\a.galaxy: the map is of version \"3\" and cannot be converted: template "
       "vnewstruct3.txt: its section count is 0 or below: ship$0\r\n"
       "The map is as it was. No further map was converted."},
  };
  for (const auto& c : cases) {
    startover(c.edition, c.debugmode);
    add("a.galaxy", oldmap);
    add("b.galaxy", oldmap);
    EXPECT_EQ(fix(), 1);
    EXPECT_EQ(tree(maps), c.left) << c.edition << c.debugmode;
    ASSERT_EQ(program.screen.messages.size(), 1u);
    EXPECT_NE(program.screen.messages[0].find(c.told), std::string::npos)
        << program.screen.messages[0];
  }
  // The backup is a file of its own: changing the map in place leaves it.
  writefile(maps / "a.galaxy", "edited");
  EXPECT_EQ(readfile(maps / "a.galold"), oldmap);
}

TEST_F(Conversion, ASilentRunTellsTroubleOnStandardErrorAlone) {
  program.form.silentmode = true;
  add("oneline.galaxy", "MAP\r\n");
  writefile(machine.data / "vnewstruct3.txt", "MAP\r\n");
  add("a.galaxy", oldmap);
  EXPECT_EQ(fix(), 1);
  EXPECT_TRUE(program.screen.messages.empty());
  ASSERT_EQ(program.screen.errors.size(), 2u);
  EXPECT_NE(program.screen.errors[0].find("oneline.galaxy"), std::string::npos);
  EXPECT_NE(program.screen.errors[1].find("vnewstruct3.txt"), std::string::npos);
}

TEST_F(Conversion, AMissingBaselineConvertsNothingAndIsTold) {
  fs::remove(machine.data / "vnewstruct0.txt");
  EXPECT_EQ(fix(), Program::goeson);
  EXPECT_TRUE(program.screen.messages.empty());
  add("a.galaxy", oldmap);
  EXPECT_EQ(fix(), Program::goeson);
  EXPECT_EQ(tree(maps), (Tree{{"a.galaxy", oldmap}}));
  ASSERT_EQ(program.screen.messages.size(), 1u);
  EXPECT_EQ(program.screen.messages[0],
            "No map was converted: vnewstruct0.txt: cannot read it: the file is missing");
  program.form.edition = "";
  fix();
  EXPECT_EQ(program.screen.messages[1],
            "No map was converted: no edition of the game is selected.");
}
