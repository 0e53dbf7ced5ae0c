// What the three outcomes of reading a file look like.
#include "convert/linereader.h"

#include "tests/support/testmachine.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

// A machine whose files are there but cannot be read.
class LockedFiles : public PrefixFiles {
public:
  using PrefixFiles::PrefixFiles;
  Result<std::string> read(const std::string& path) override {
    return Failure{path, "read it", "locked"};
  }
};

}  // namespace

TEST(LineReader, TellsLinesMissingAndUnreadableApartByShape) {
  TestMachine machine;
  Program program(machine);
  writefile(machine.data / "two.txt", "a\r\nb");
  writefile(machine.data / "empty.txt", "");
  writefile(machine.data / ".hidden", "a");
  fs::create_directory(machine.data / "folder.txt");
  fs::create_symlink(machine.data / "two.txt", machine.data / "link.txt");
  fs::create_symlink(machine.data / "nothing", machine.data / "dangling.txt");
  const struct {
    const char* path;
    std::size_t lines;
  } cases[] = {
      {"two.txt", 2},      {"TWO.TXT", 2},         {"link.txt", 2}, {"empty.txt", 0},
      {"none.txt", 11},    {"folder.txt", 11},     {".hidden", 11}, {"dangling.txt", 11},
      {"none\\a.txt", 11}, {"two.txt\\a.txt", 11}, {"t*.txt", 1},   {"\"", 1},
  };
  for (const auto& c : cases)
    EXPECT_EQ(readlines(program.files, c.path).size(), c.lines) << c.path;
  LockedFiles locked(machine.machine);
  EXPECT_EQ(readlines(locked, "two.txt").size(), 1u);
  EXPECT_EQ(readlines(locked, "none.txt").size(), 11u);
}
