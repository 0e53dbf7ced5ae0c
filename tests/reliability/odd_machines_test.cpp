// Machines as large, as deep and as strange as strangers can make them: the program comes to its
// end, in time and in memory that follow what it is given.
#include "platform/prefix/handle.h"
#include "platform/prefix/registry_text.h"
#include "tests/support/disks.h"
#include "tests/support/process.h"
#include "tests/support/promise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iostream>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr bool sanitized = true;  // slower by far, and hungrier
#else
constexpr bool sanitized = false;
#endif

constexpr std::size_t megabyte = std::size_t{1} << 20;

std::string repeated(std::string_view piece, std::size_t size) {
  std::string text;
  text.reserve(size + piece.size());
  while (text.size() < size)
    text += piece;
  return text;
}

class OddMachine : InMemory, public testing::Test {
protected:
  OddMachine() {
    machine.write_data();
    machine.install("vora", {1, 2, 3, 4});
    fs::create_directories(folder);
  }

  // Runs the program, which must use at most that much memory.
  Process::Ended run(std::size_t megabytes) {
    auto ended = run_silently(machine);
    std::cout << "memory: " << ended.kilobytes / 1024 << " MB\n";
    EXPECT_TRUE(sanitized || ended.kilobytes <= static_cast<long>(megabytes * 1024));
    return ended;
  }

  TestMachine machine;
  const fs::path folder = machine.user_folder;
};

}  // namespace

// A value is found once its line is complete, and until then none is taken for it. A closing quote
// completes a line too; of numbers and bytes more may follow.
TEST(OddRegistry, CutOffAfterEveryByteGivesTheValuesOfItsCompleteLines) {
  const struct {
    std::string name, line, value;
  } values[] = {
      {"Path", R"("Path"="C:\\Games")", "C:\\Games"},
      {"Wide", R"("Wide"=str(2):"%ProgramFiles%\\\x00e9")", "%ProgramFiles%\\\xC3\xA9"},
      {"Number", R"("Number"=dword:0000002a)", "42"},
      {"Bytes", "\"Bytes\"=hex(2):43,00,\\\r\n  3a,00,\\\r\n  00,00", "C:"},
      {"", R"(@="unnamed")", "unnamed"},
  };
  std::string text = "WINE REGISTRY Version 2\r\n\r\n[Software\\\\Last] 1\r\n";
  std::vector<std::size_t> complete;
  for (const auto& value : values) {
    text += value.line;
    complete.push_back(text.size() + (text.ends_with('"') ? 0 : 2));
    text += "\r\n";
  }
  for (std::size_t length = 0; length <= text.size(); ++length) {
    SCOPED_TRACE(text.substr(0, length));
    for (std::size_t i = 0; i < std::size(values); ++i) {
      const auto found = find_value(text.substr(0, length), "Software\\Last", values[i].name);
      ASSERT_EQ(found.has_value(), length >= complete[i]) << values[i].name;
      if (!found)
        continue;
      const bool is_number = found->type == RegistryValue::Type::number;
      EXPECT_EQ(is_number ? std::to_string(found->number) : found->text, values[i].value);
    }
  }
}

// Many keys before those that count, and one among them that is large by itself.
TEST_F(OddMachine, ALargeRegistry) {
  const std::size_t size = (sanitized ? 5 : 100) * megabyte;
  const fs::path registry = machine.prefix / "system.reg";
  write_file(
      registry,
      repeated("[Software\\\\Some\\\\Key] 1\n\"Name\"=\"text\"\n\"Data\"=hex:01,\\\n  03\n\n",
               size) +
          "[Software\\\\Large] 1\n\"Name\"=\"" + std::string(megabyte, 'v') + "\"\n\n" +
          read_file(registry));
  write_file(folder / "a.galaxy", old_map);
  EXPECT_EQ(run(16).said, "");
  EXPECT_EQ(read_file(folder / "a.galaxy"), converted_map);
}

TEST_F(OddMachine, DrivesThatPointToThemselves) {
  const fs::path dosdevices = machine.prefix / "dosdevices";
  fs::create_directory(dosdevices);
  fs::create_directory_symlink("../drive_c", dosdevices / "c:");
  fs::create_directory_symlink("e:", dosdevices / "e:");
  fs::create_directory_symlink("../dosdevices", dosdevices / "f:");
  fs::create_directory_symlink(folder, folder / "again");
  write_file(folder / "a.galaxy", old_map);
  EXPECT_EQ(run(32).said, "");
  EXPECT_EQ(read_file(folder / "a.galaxy"), converted_map);
}

// Deeper than the system takes a path in one piece.
TEST_F(OddMachine, ADeepTree) {
  Handle below = open_path(system_disk(), folder.string(), O_RDONLY | O_DIRECTORY);
  for (int depth = 0; depth < 2000; ++depth) {
    ASSERT_EQ(::mkdirat(below.get(), "deep", 0755), 0);
    below = open_at(below, "deep", O_RDONLY | O_DIRECTORY);
  }
  Handle map = open_at(below, "a.galaxy", O_RDWR | O_CREAT, 0644);
  ASSERT_TRUE(write_all(map, old_map));
  EXPECT_EQ(run(96).said, "");
  map = open_at(below, "a.galaxy", O_RDONLY);
  std::string text(std::string(converted_map).size(), ' ');
  ASSERT_TRUE(read_all(map, text.data(), text.size()));
  EXPECT_EQ(text, converted_map);
}

TEST_F(OddMachine, AFolderOfManyMaps) {
  const int count = sanitized ? 2000 : 50000;
  for (int i = 0; i < count; ++i)
    std::ofstream(folder / (std::to_string(i) + ".galaxy"))
        << (i % 100 == 0 ? old_map : converted_map);
  EXPECT_EQ(run(16).said, "");
  for (int i = 0; i < count; i += 100)
    EXPECT_EQ(read_file(folder / (std::to_string(i) + ".galaxy")), converted_map);
}

// Alone and beside odd neighbours, each in a folder of its own: a name that Windows allows is that
// of a map, any other stays what it is.
TEST_F(OddMachine, NamesOfEveryByte) {
  std::vector<std::string> names;
  for (int byte = 1; byte < 256; ++byte) {
    const std::string one(1, static_cast<char>(byte));
    if (one == "/")
      continue;
    for (const char* const neighbour : {"", "a", " ", ".", "\x80", "\xC3"})
      names.insert(names.end(), {neighbour + one, one + neighbour});
  }
  const auto folder_of = [&](std::size_t i) { return folder / std::to_string(i); };
  for (std::size_t i = 0; i < names.size(); ++i)
    write_file(folder_of(i) / (names[i] + ".galaxy"), old_map);
  EXPECT_EQ(run(32).said, "");
  for (std::size_t i = 0; i < names.size(); ++i) {
    const bool is_map =
        names[i].find_first_of("\\*?\"<>|:") == std::string::npos && !names[i].starts_with('.') &&
        std::none_of(names[i].begin(), names[i].end(), [](char c) { return c >= 1 && c < ' '; });
    Tree expected{{names[i] + ".galaxy", is_map ? converted_map : old_map}};
    if (is_map)
      expected[names[i] + ".galold"] = old_map;
    EXPECT_EQ(tree(folder_of(i)), expected);
  }
}

// The last section of a large template is the map's; its other lines are carried over.
TEST_F(OddMachine, ALargeMapAndLargeTemplates) {
  std::string old = "MAP\r\nver$1\r\nversion\r\n", current = "MAP\r\nver$1\r\nversion 4\r\n";
  for (int i = 0; i < 50000; ++i) {
    const std::string number = std::to_string(i);
    old += "s$1\r\nsection" + number + "\r\n";
    current += "s$1\r\nnewsection" + number + "\r\n";
  }
  write_file(machine.data / "voldstruct3.txt", old);
  write_file(machine.data / "vnewstruct3.txt", current);
  const std::size_t size = (sanitized ? 5 : 200) * megabyte;
  const std::string lines = repeated("a line that is carried over as it stands\r\n", size);
  write_file(folder / "a.galaxy", "MAP\r\nversion 3\r\n" + lines + "section49999\r\n");
  EXPECT_EQ(run(4 * size / megabyte + 16 + 16).said, "");
  EXPECT_EQ(read_file(folder / "a.galaxy"), "MAP\r\nversion 4\r\n" + lines + "newsection49999\r\n");
}
