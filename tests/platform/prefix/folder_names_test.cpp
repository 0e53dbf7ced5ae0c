// The order of a folder's names, and finding them case-insensitively.
#include "platform/prefix/folder_names.h"

#include "platform/letter_case.h"
#include "platform/path_rules.h"
#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <tuple>

#include <fcntl.h>

namespace fs = std::filesystem;

namespace {

// Letters in both cases, some of more than one byte, and invalid bytes.
std::string random_name(std::mt19937& chance) {
  static const char* const letters[] = {"a",        "A",        "b",       "B", "_",
                                        "\xC3\xA9", "\xC3\x89", "k",       "K", "\xE2\x84\xAA",
                                        "\xC3",     "\x89",     "\xD0\x96"};
  std::string name;
  for (auto left = chance() % 6; left > 0; --left)
    name += letters[chance() % std::size(letters)];
  return name;
}

}  // namespace

TEST(Folders, EntriesAreSortedAsTheirLoweredNamesAre) {
  std::mt19937 chance(1);
  std::vector<Entry> entries;
  for (int i = 0; i < 20'000; ++i)
    entries.push_back({random_name(chance), false, false});
  sort_entries(entries, lowercase);
  EXPECT_TRUE(std::is_sorted(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
    return std::tuple(lowercase(a.name), a.name) < std::tuple(lowercase(b.name), b.name);
  }));
}

// Names that were there before, that the caller creates, and that another process creates.
TEST(Folders, NamesAreFoundInOtherLetterCase) {
  TestMachine machine;
  const fs::path path = machine.drive_c / "f";
  for (const char* name : {"One", "two", "TWO", "tWo"})
    write_file(path / name, "");
  const auto folder = open_path(system_disk(), path.string(), O_RDONLY | O_DIRECTORY);
  FolderNames::Known known;
  const auto names = FolderNames::of(folder, known);
  const auto found = [&](const char* name) { return names->find(folder, name); };
  EXPECT_EQ(found("four"), "");
  names->added("Three");
  write_file(path / "Three", "");
  names->changed(folder);
  EXPECT_EQ(FolderNames::of(folder, known), names);
  EXPECT_EQ(found("three"), "Three");
  EXPECT_EQ(found("one"), "One");
  EXPECT_EQ(found("TwO"), "TWO");
  EXPECT_EQ(found("two"), "two");
  names->added("Four");
  write_file(path / "Four", "");
  EXPECT_EQ(found("four"), "Four");
  fs::remove(path / "One");
  EXPECT_EQ(found("one"), "");
  write_file(path / "Five", "");
  EXPECT_EQ(FolderNames::of(folder, known), names);
  EXPECT_EQ(found("five"), "Five");

  const auto other = open_path(system_disk(), machine.drive_c.string(), O_RDONLY | O_DIRECTORY);
  EXPECT_EQ(FolderNames::of(other, known)->find(other, "five"), "");
  EXPECT_EQ(FolderNames::of(folder, known), names);
}
