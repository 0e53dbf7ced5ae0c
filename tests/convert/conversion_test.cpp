// The conversion run: what it leaves on the disk and on the screen.
#include "convert/conversion.h"

#include "convert/original_maps.h"
#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

// A machine with a folder of maps, and the program about to convert them.
class Conversion : public testing::Test {
protected:
  Conversion() {
    machine.write_data();
    fs::create_directory(maps);
    program.form.edition = "v";
    program.form.Label8.set_text("1");
  }

  void add(const std::string& name, const std::string& text) {
    write_file(maps / name, text);
    found(name);
  }

  void found(const std::string& name) {
    auto& list = program.form.foundlist;
    list.insert(list.end() - 1, "C:\\maps\\" + name);
  }

  // Another run, with nothing found yet and no map there.
  void start_over(const char* edition = "v", bool debugmode = false) {
    fs::remove_all(maps);
    program.form.foundlist = {""};
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

  // Whether there was one message, with such a text in it.
  bool reported(const std::string& text) {
    const std::vector<std::string>& messages = program.screen.messages;
    return messages.size() == 1 && messages[0].find(text) != std::string::npos;
  }

  TestMachine machine;
  const fs::path maps = machine.drive_c / "maps";
  Program program{machine};
};

const Tree converted = {{"a.galaxy", converted_map}, {"a.galold", old_map}};

}  // namespace

TEST_F(Conversion, LeavesTheCompanionsOfEachModeBesideAMap) {
  const struct {
    const char* edition;
    bool debugmode;
    Tree left;
  } cases[] = {
      {"v", false, converted},
      {"t", false, {{"a.galaxy", fixed_map}, {"a.galold", old_map}, {"a.galfix", converted_map}}},
      {"v", true, {{"a.galaxy", old_map}, {"a.galtst", converted_map}}},
      {"t", true, {{"a.galaxy", old_map}, {"a.galtst", old_map}}},
  };
  for (const auto& c : cases) {
    start_over(c.edition, c.debugmode);
    add("a.galaxy", old_map);
    EXPECT_EQ(fix(), Program::returned);
    EXPECT_EQ(tree(maps), c.left) << c.edition << c.debugmode;
    // Again: the map is current now, or in debug mode its companion is overwritten.
    EXPECT_EQ(fix(), Program::returned);
    EXPECT_EQ(tree(maps), c.left) << c.edition << c.debugmode;
  }
  EXPECT_TRUE(program.screen.messages.empty());
}

TEST_F(Conversion, CountsAndListsWhatItConvertsAndLeavesTheRestAlone) {
  add("current.galaxy", "MAP\r\nversion 4\r\nship Foo\r\n");
  add("newer.galaxy", "MAP\r\nversion 12\r\nship Foo\r\n");
  add("OWN.galaxy", old_map);
  add("\xC3\x89TOILE.galaxy", old_map);
  Tree left = tree(maps);
  add("B.GALAXY", old_map);
  add("a.galaxy", old_map);
  left.insert({{"B.GALAXY", converted_map}, {"B.GALold", old_map}});
  left.insert(converted.begin(), converted.end());
  fix();
  EXPECT_EQ(tree(maps), left);
  EXPECT_EQ(program.form.Text2.text(), "B.GALAXY\r\na.galaxy\r\n");
  EXPECT_EQ(program.form.Label4.text(), "1");
  EXPECT_EQ(program.form.Label8.text(), "2");
}

TEST_F(Conversion, TakesTheVersionFromTheEndOfTheSecondLine) {
  // Whatever the version text holds, it only ever names a template beside the program.
  const std::pair<const char*, const char*> cases[] = {
      {"v 3", "voldstruct3.txt"},  {"v3 ", "voldstruct3 .txt"},
      {"x", "voldstructx.txt"},    {"", "voldstruct.txt"},
      {" ", "voldstruct.txt"},     {"v-1", "voldstruct-1.txt"},
      {"v03", "voldstruct03.txt"}, {"v\\3", "voldstruct\\3.txt"},
      {"v..", "voldstruct...txt"}, {"v\x1Bx", "voldstruct\\x1Bx.txt"},
  };
  fs::remove(machine.data / "voldstruct3.txt");
  for (const auto& [second_line, file] : cases) {
    start_over();
    add("a.galaxy", "MAP\r\n" + std::string(second_line) + "\r\nend\r\n");
    EXPECT_EQ(fix(), 1);
    EXPECT_TRUE(reported(file)) << file;
  }
}

TEST_F(Conversion, TellsWhichMapsItCouldNotConvertAndGoesOn) {
  found("vanished.galaxy");
  add("oneline.galaxy", "MAP\r\n");
  add("empty.galaxy", "");
  add("lf.galaxy", "MAP\nversion 3\n");
  add("huge.galaxy", "");
  fs::resize_file(maps / "huge.galaxy", Files::max_file_size + 1);
  add("taken.galaxy", old_map);
  fs::create_directories(maps / "taken.GALOLD");
  add("a.galaxy", old_map);
  EXPECT_EQ(fix(), Program::returned);
  fs::remove(maps / "huge.galaxy");
  EXPECT_EQ(tree(maps), (Tree{{"oneline.galaxy", "MAP\r\n"},
                              {"empty.galaxy", ""},
                              {"lf.galaxy", "MAP\nversion 3\n"},
                              {"taken.galaxy", old_map},
                              {"a.galaxy", converted_map},
                              {"a.galold", old_map}}));
  EXPECT_EQ(program.form.Text2.text(), "a.galaxy\r\n");
  EXPECT_TRUE(program.form.trouble);
  EXPECT_TRUE(
      reported("6 maps could not be converted and were skipped:\r\n"
               "C:\\maps\\vanished.galaxy: cannot read it: the file is missing\r\n"
               "C:\\maps\\oneline.galaxy: cannot convert it: it has no second line\r\n"
               "C:\\maps\\empty.galaxy: cannot convert it: it has no second line\r\n"
               "C:\\maps\\lf.galaxy: cannot convert it: its lines must end in CR LF\r\n"
               "C:\\maps\\huge.galaxy: cannot read it: it is larger than 1 GiB\r\n"
               "C:\\maps\\taken.galaxy: cannot convert it: a folder has the name taken.galold"));
}

TEST_F(Conversion, ATemplateErrorEndsTheProgramAndLosesNothing) {
  write_file(machine.data / "vnewstruct3.txt", "MAP\r\nver$1\r\nversion 4\r\nship$0.9\r\n");
  write_file(machine.data / "tnewstructfix4.txt", "MAP\r\n");
  const Tree untouched = {{"a.galaxy", old_map}, {"b.galaxy", old_map}};
  const Tree backed_up = {{"a.galaxy", old_map}, {"a.galold", old_map}, {"b.galaxy", old_map}};
  const struct {
    const char* edition;
    bool debugmode;
    Tree left;
    const char* reported;
  } cases[] = {
      {"t", false, backed_up,
       "tnewstructfix4.txt: its section count is 0 or below: MAP\r\n"
       "The map is as it was. No further map was converted."},
      {"v", true, untouched, "vnewstruct3.txt"},
      {"v", false, backed_up,
       "C:\\maps\\a.galaxy: the map is of version \"3\" and cannot be converted: template "
       "vnewstruct3.txt: its section count is 0 or below: ship$0.9\r\n"
       "The map is as it was. No further map was converted: 2 of the found maps are of that "
       "version; move them elsewhere and run again for the others."},
  };
  for (const auto& c : cases) {
    start_over(c.edition, c.debugmode);
    add("a.galaxy", old_map);
    add("b.galaxy", old_map);
    found("a.galaxy");  // as where both search roots are one folder: it counts once
    EXPECT_EQ(fix(), 1);
    EXPECT_EQ(tree(maps), c.left) << c.edition << c.debugmode;
    EXPECT_TRUE(reported(c.reported)) << c.reported;
  }
  // The backup is a file of its own: changing the map in place leaves it.
  write_file(maps / "a.galaxy", "edited");
  EXPECT_EQ(read_file(maps / "a.galold"), old_map);
}

TEST_F(Conversion, ASilentRunTellsTroubleOnStandardErrorAlone) {
  program.form.unattended = true;
  add("oneline.galaxy", "MAP\r\n");
  found("oneline.galaxy");
  write_file(machine.data / "vnewstruct3.txt", "MAP\r\n");
  add("a.galaxy", old_map);
  EXPECT_EQ(fix(), 1);
  EXPECT_TRUE(program.screen.messages.empty());
  ASSERT_EQ(program.screen.errors.size(), 2u);
  EXPECT_TRUE(program.screen.errors[0].starts_with(
      "1 map could not be converted and was skipped:\r\nC:\\maps\\oneline.galaxy: cannot"));
  EXPECT_NE(program.screen.errors[1].find("vnewstruct3.txt"), std::string::npos);
}

// A version below 0 is older than any, but there is nothing to convert it to.
TEST_F(Conversion, NothingIsConvertedWithoutAFormatVersion) {
  const fs::path baseline = machine.data / "vnewstruct0.txt";
  const Tree left = {{"a.galaxy", "MAP\r\nversion -5\r\n"}};
  const struct {
    const char *edition, *baseline;  // null when it is missing
    std::string reported;
  } cases[] = {
      {"v", nullptr,
       "vnewstruct0.txt is missing in " + z_path(machine.data) + ". " +
           advise_folder(program.form.system, "vnewstruct0.txt")},
      {"", "a\r\nversion 4\r\n", "no edition of the game is selected."},
      {"v", "a\r\nno number", "vnewstruct0.txt"},
      {"v", "one line", "vnewstruct0.txt"},
      {"v", "", "vnewstruct0.txt"},
      {"v", "a\nversion 4\n", "vnewstruct0.txt"},
  };
  for (const auto& c : cases) {
    fs::remove(baseline);
    if (c.baseline)
      write_file(baseline, c.baseline);
    start_over(c.edition);
    EXPECT_EQ(fix(), Program::returned);
    EXPECT_TRUE(program.screen.messages.empty());
    add("a.galaxy", left.at("a.galaxy"));
    found("missing.galaxy");  // is not opened, so not reported
    program.form.Label8.set_text("1");
    program.screen.at_message = [&] { EXPECT_EQ(program.form.Label8.text(), "2"); };
    EXPECT_EQ(fix(), Program::returned);
    EXPECT_TRUE(reported("No map was converted: " + c.reported)) << c.reported;
    EXPECT_EQ(tree(maps), left);
  }
}
