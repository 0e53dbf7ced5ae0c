// How the data files are read: lines, the list of the game's own maps, and templates.
#include "convert/line_reader.h"
#include "convert/original_maps.h"
#include "convert/template_files.h"
#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

TEST(LineReader, TellsLinesMissingAndUnreadableApartByShape) {
  TestMachine machine;
  Program program(machine);
  write_file(machine.data / "two.txt", "a\r\nb");
  write_file(machine.data / "empty.txt", "");
  write_file(machine.data / "huge.txt", "");
  fs::create_directory(machine.data / "folder.txt");
  fs::resize_file(machine.data / "huge.txt", Files::max_file_size + 1);
  const std::pair<const char*, std::size_t> cases[] = {
      {"two.txt", 2},     {"TWO.TXT", 2},      {"empty.txt", 0},       {"none.txt", 11},
      {"folder.txt", 11}, {"none\\a.txt", 11}, {"two.txt\\a.txt", 11}, {"huge.txt", 1},
      {"t*.txt", 1},      {"\"", 1},           {"folder.txt\\", 11},
  };
  for (const auto& [path, lines] : cases)
    EXPECT_EQ(readlines(program.files, path).size(), lines) << path;
}

TEST(OriginalMaps, AMissingListIsRememberedForGood) {
  TestMachine machine;
  Program program(machine);
  const auto list = machine.data / "original vora galaxies.txt";
  for (const bool missing : {false, true, false}) {
    const bool ever = program.form.missingdata || missing;
    fs::remove(list);
    if (!missing)
      write_file(list, "Alpha.galaxy\r\nBeta.galaxy\r\n");
    loadoriginalmaps(program.form);
    EXPECT_EQ(program.form.missingdata, ever);
    ASSERT_EQ(program.form.originalmaps.size(), ever ? 1u : 2u);
    EXPECT_EQ(program.form.originalmaps[0], ever ? "" : "Alpha.galaxy");
  }
}

// Editors of different ages write it, each line in UTF-8 or in code page 1252.
TEST(OriginalMaps, MayBeListedInTheSystemsCodePage) {
  TestMachine machine;
  Program program(machine);
  write_file(
      machine.data / "original vora galaxies.txt",
      "\xC9toile.galaxy\r\n\xC3\x89toile du Nord.galaxy\r\n\r\n\x80\x8D.galaxy\r\nb.galaxy\r\n");
  loadoriginalmaps(program.form);
  EXPECT_EQ(program.form.originalmaps.size(), 5u);
  for (const char* own : {"étoile.GALAXY", "Étoile du nord.galaxy", "B.galaxy"})
    EXPECT_TRUE(is_original(program.form, std::string("C:\\maps\\") + own)) << own;
  EXPECT_FALSE(is_original(program.form, "C:\\maps\\etoile.galaxy"));
}

TEST(TemplateFiles, AreReadAnewOnceTheirFilesChange) {
  TestMachine machine;
  Program program(machine);
  TemplateFiles templates(program.files, "t");
  for (const long long count : {1, 5}) {
    write_file(machine.data / "toldstruct12.txt", "a$" + std::to_string(count));
    EXPECT_EQ(templates.loadold("12").counts[0], count);
  }
  fs::remove(machine.data / "toldstruct12.txt");
  const OldTemplate& missing = templates.loadold("12");
  EXPECT_TRUE(missing.failure && missing.lines.size() == 11);
}
