// Machines as large, as deep and as strange as strangers can make them: the program comes to its
// end, in time and in memory that follow what it is given.
#include "platform/prefix/handle.h"
#include "platform/prefix/registrytext.h"
#include "tests/support/process.h"

#include <gtest/gtest.h>

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

class OddMachine : public testing::Test {
protected:
  OddMachine() {
    machine.writedata();
    machine.install("vora", {1, 2, 3, 4});
    fs::create_directories(folder);
  }

  // Runs the program, which must use at most that much memory.
  Process::Ended run(std::size_t megabytes) {
    auto ended = runsilently(machine);
    std::cout << "memory: " << ended.kilobytes / 1024 << " MB\n";
    EXPECT_TRUE(sanitized || ended.kilobytes <= static_cast<long>(megabytes * 1024));
    return ended;
  }

  TestMachine machine;
  const fs::path folder = machine.userfolder;
};

}  // namespace

TEST(OddRegistry, IsReadToItsEndHoweverItIsMade) {
  const std::string filler =
      repeated("[Software\\\\Some\\\\Key] 1\n\"Name\"=\"text\"\n\"Data\"=hex:01,02,\\\n  03\n\n",
               (sanitized ? 5 : 100) * megabyte);
  const std::string large(megabyte, 'v');
  const std::string text = filler + "[Software\\\\Last] 1\n\"Path\"=\"" + large + "\"\n";
  const auto found = findvalue(text, "Software\\Last", "Path");
  ASSERT_TRUE(found.has_value());
  EXPECT_EQ(found->text, large);
  const std::string tail =
      "[Software\\\\Last] 1\r\n\"Path\"=\"C:\\\\Games\"\r\n\"N\"=hex:01,\\\r\n  02\r\n";
  for (std::size_t length = 0; length <= tail.size(); ++length) {
    const std::string cut = tail.substr(0, length);
    const auto value = findvalue(cut, "Software\\Last", "Path");
    EXPECT_TRUE(!value || value->text.starts_with("C:\\Games") || length < 40) << length;
    static_cast<void>(withvalue(cut, "Software\\Last", "Path", {RegistryValue::Type::text, "x"}));
  }
}

TEST_F(OddMachine, DrivesThatPointToThemselves) {
  const fs::path dosdevices = machine.prefix / "dosdevices";
  fs::create_directory(dosdevices);
  fs::create_directory_symlink("../drive_c", dosdevices / "c:");
  fs::create_directory_symlink("e:", dosdevices / "e:");
  fs::create_directory_symlink("../dosdevices", dosdevices / "f:");
  fs::create_directory_symlink(folder, folder / "again");
  writefile(folder / "a.galaxy", oldmap);
  EXPECT_EQ(run(32).said, "");
  EXPECT_EQ(readfile(folder / "a.galaxy"), convertedmap);
}

// Deeper than the system takes a path in one piece.
TEST_F(OddMachine, ADeepTree) {
  Handle below = openpath(systemdisk(), folder.string(), O_RDONLY | O_DIRECTORY);
  for (int depth = 0; depth < 2000; ++depth) {
    ASSERT_EQ(::mkdirat(below.get(), "deep", 0755), 0);
    below = opennameat(below, "deep", O_RDONLY | O_DIRECTORY);
  }
  Handle map = opennameat(below, "a.galaxy", O_RDWR | O_CREAT, 0644);
  ASSERT_TRUE(writeall(map, oldmap));
  EXPECT_EQ(run(96).said, "");
  map = opennameat(below, "a.galaxy", O_RDONLY);
  std::string text(std::string(convertedmap).size(), ' ');
  ASSERT_TRUE(readall(map, text.data(), text.size()));
  EXPECT_EQ(text, convertedmap);
}

TEST_F(OddMachine, AFolderOfManyMaps) {
  const int count = sanitized ? 2000 : 50000;
  for (int i = 0; i < count; ++i)
    std::ofstream(folder / (std::to_string(i) + ".galaxy"))
        << (i % 100 == 0 ? oldmap : convertedmap);
  EXPECT_EQ(run(96).said, "");
  for (int i = 0; i < count; i += 100)
    EXPECT_EQ(readfile(folder / (std::to_string(i) + ".galaxy")), convertedmap);
}

TEST_F(OddMachine, NamesOfEveryByte) {
  for (int byte = 1; byte < 256; ++byte)
    if (byte != '/')
      writefile(folder / ("a" + std::string(1, static_cast<char>(byte)) + ".galaxy"), oldmap);
  EXPECT_EQ(run(32).said, "");
  for (const int byte : {0x20, 0x27, 0x7B, 0x80, 0xE4, 0xFF}) {
    const std::string name = "a" + std::string(1, static_cast<char>(byte));
    EXPECT_EQ(readfile(folder / (name + ".galaxy")), convertedmap) << byte;
    EXPECT_EQ(readfile(folder / (name + ".galold")), oldmap) << byte;
  }
  for (const char byte : {'\\', '*', '?', '"'})
    EXPECT_EQ(readfile(folder / ("a" + std::string(1, byte) + ".galaxy")), oldmap) << byte;
}

// The last section of a large template is the map's; its other lines are carried over.
TEST_F(OddMachine, ALargeMapAndLargeTemplates) {
  std::string old = "MAP\r\nver$1\r\nversion\r\n", current = "MAP\r\nver$1\r\nversion 4\r\n";
  for (int i = 0; i < 50000; ++i) {
    const std::string number = std::to_string(i);
    old += "s$1\r\nsection" + number + "\r\n";
    current += "s$1\r\nnewsection" + number + "\r\n";
  }
  writefile(machine.data / "voldstruct3.txt", old);
  writefile(machine.data / "vnewstruct3.txt", current);
  const std::size_t size = (sanitized ? 5 : 200) * megabyte;
  const std::string lines = repeated("a line that is carried over as it stands\r\n", size);
  writefile(folder / "a.galaxy", "MAP\r\nversion 3\r\n" + lines + "section49999\r\n");
  EXPECT_EQ(run(4 * size / megabyte + 16 + 16).said, "");
  EXPECT_EQ(readfile(folder / "a.galaxy"), "MAP\r\nversion 4\r\n" + lines + "newsection49999\r\n");
}
