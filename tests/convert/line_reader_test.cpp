// What the three outcomes of reading a file look like.
#include "convert/line_reader.h"

#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

TEST(LineReader, TellsLinesMissingAndUnreadableApartByShape) {
  TestMachine machine;
  Program program(machine);
  write_file(machine.data / "two.txt", "a\r\nb");
  write_file(machine.data / "empty.txt", "");
  write_file(machine.data / "huge.txt", "");
  std::filesystem::create_directory(machine.data / "folder.txt");
  std::filesystem::resize_file(machine.data / "huge.txt", Files::max_file_size + 1);
  const std::pair<const char*, std::size_t> cases[] = {
      {"two.txt", 2},     {"TWO.TXT", 2},      {"empty.txt", 0},       {"none.txt", 11},
      {"folder.txt", 11}, {"none\\a.txt", 11}, {"two.txt\\a.txt", 11}, {"huge.txt", 1},
      {"t*.txt", 1},      {"\"", 1},           {"folder.txt\\", 11},
  };
  for (const auto& [path, lines] : cases)
    EXPECT_EQ(readlines(program.files, path).size(), lines) << path;
}
