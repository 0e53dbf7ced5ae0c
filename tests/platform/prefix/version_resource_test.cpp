// The version reader against executables made here: intact ones, and ones malformed in every way
// that an untrusted file may be.
#include "platform/prefix/version_resource.h"

#include "tools/executable.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

constexpr VersionParts release{32768, 65535, 3, 4};
const Executable game{.product_version = release};
const ExecutableLayout at(false);

// As one number of 64 bits; 0 for none.
std::uint64_t version_of(const std::string& bytes) {
  std::istringstream stream(bytes);
  const auto version = read_product_version(stream);
  return version ? std::uint64_t{version->high} << 32 | version->low : 0;
}

TEST(VersionResource, GivesTheProductVersion) {
  for (const bool wide : {false, true}) {
    const auto bytes = Executable{.product_version = release, .wide = wide}.bytes();
    const std::size_t needed = ExecutableLayout(wide).fixed_info + 52;
    for (std::size_t length = 0; length < needed; ++length)
      ASSERT_EQ(version_of(bytes.substr(0, length)), 0u) << length;
    EXPECT_EQ(version_of(bytes.substr(0, needed)), 0x8000'FFFF'0003'0004u);
    EXPECT_EQ(version_of(Executable{.wide = wide, .version_resource = false}.bytes()), 0u);
  }
}

TEST(VersionResource, FindsItAmongOthers) {
  auto bytes = game.bytes();
  bytes.append(0x400, '\0');
  const std::size_t other = at.end;  // a directory of types in which three others come first
  put32(bytes, at.section_table + 16, 0x600);
  put16(bytes, other + 12, 1);  // one with a name, whose offset happens to be the type's number
  put16(bytes, other + 14, 3);
  put32(bytes, other + 16, 16);
  put32(bytes, other + 24, 3);
  put32(bytes, other + 32, 16);
  put32(bytes, other + 36, 0x80000018);
  put32(bytes, other + 40, 24);
  put32(bytes, at.directories + 16, 0x1200);
  EXPECT_EQ(version_of(bytes), 0u) << "the offsets still count from the old directory";
  bytes.replace(other + 0x40, 0x60, bytes, at.names, 0x60);
  put32(bytes, other + 36, 0x80000040);
  put32(bytes, other + 0x40 + 20, 0x80000058);
  put32(bytes, other + 0x58 + 20, 0x70);
  EXPECT_EQ(version_of(bytes), 0x8000'FFFF'0003'0004u);
}

// The game's resource beside another that leads nowhere.
TEST(VersionResource, TakesTheNameOfVersionsAndTheFirstLanguage) {
  enum class Taken { first, second, none };
  const struct {
    std::size_t directory;
    std::uint32_t first, second;
    Taken taken;
  } cases[] = {
      {at.names, 2, 1, Taken::second},
      {at.names, 1, 2, Taken::first},
      {at.names, 2, 3, Taken::none},
      {at.languages, 0x0407, 0x0409, Taken::first},
  };
  for (const auto& c : cases)
    for (const auto intact : {Taken::first, Taken::second}) {
      auto bytes = game.bytes();
      const std::size_t moved = 0x300;  // the directory, with one entry more
      const auto offset = static_cast<std::uint32_t>(moved - at.resources);
      const auto target = bytes.substr(c.directory + 20, 4);
      put32(bytes, c.directory - 4, 0x80000000 | offset);
      put16(bytes, moved + 14, 2);
      put32(bytes, moved + 16, c.first);
      put32(bytes, moved + 24, c.second);
      bytes.replace(moved + (intact == Taken::first ? 20 : 28), 4, target);
      EXPECT_EQ(version_of(bytes) != 0, intact == c.taken) << c.first << ", " << c.second;
    }
}

TEST(VersionResource, MalformedFilesHaveNone) {
  const struct {
    std::size_t offset;
    std::initializer_list<std::uint32_t> values;
    bool wide = true;  // four bytes, not two
  } cases[] = {
      {0, {0}, false},                                  // the MZ signature
      {0x3C, {0xFFFFFFFF}},                             // offset of the PE header
      {at.header, {0}, false},                          // the PE signature
      {at.header + 6, {0}, false},                      // number of sections
      {at.header + 20, {96 + 2 * 8}, false},            // size of the optional header
      {at.optional, {0x107, 0x20B}, false},             // kind of image
      {at.directories - 4, {2}},                        // number of data directories
      {at.directories + 16, {0, 0xFFFFFFF0, 0x11FC}},   // address of the resources
      {at.section_table + 12, {0x1001}},                // address of the section
      {at.section_table + 16, {0}},                     // its size
      {at.section_table + 20, {0xFFFFFE00}},            // its offset in the file
      {at.types + 14, {0}, false},                      // number of types
      {at.types + 16, {17}},                            // the type
      {at.types + 20, {0x18, 0xFFFFFFFF, 0x80000000}},  // offset of its names
      {at.names + 14, {0}, false},                      // number of names
      {at.names + 20, {0x30}},                          // offset of the languages
      {at.languages + 14, {0}, false},                  // number of languages
      {at.data_entry, {0x11F0}},                        // address of the data
      {at.data_entry + 4, {91, 0x1A9, 0xFFFFFFFF}},     // its size
      {at.version_info, {91}, false},                   // size of the block
      {at.version_info + 2, {0, 51}, false},            // size of its value
      {at.version_info + 6, {'X'}, false},              // the first letter of its key
      {at.version_info + 36, {'X'}, false},             // the end of its key
      {at.fixed_info, {0xBD04EFFE}},                    // the signature of its value
  };
  for (const auto& each : cases)
    for (const auto value : each.values) {
      auto bytes = game.bytes();
      if (each.wide)
        put32(bytes, each.offset, value);
      else
        put16(bytes, each.offset, static_cast<std::uint16_t>(value));
      EXPECT_EQ(version_of(bytes), 0u) << each.offset << ": " << value;
    }
}

}  // namespace
