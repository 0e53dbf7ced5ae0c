// The version reader against executables made here: whole ones, and ones damaged in every way that
// an untrusted file may be.
#include "platform/prefix/versionresource.h"

#include "tools/executable.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <sstream>

namespace {

const Executable sample{.productversion = {1, 2, 3, 4}};
const ExecutableLayout at(false);

std::string releaseof(const std::string& bytes) {
  std::istringstream stream(bytes);
  const auto version = readproductversion(stream);
  if (!version)
    return "none";
  std::ostringstream text;
  text << (version->high >> 16) << '.' << (version->high & 0xFFFF) << '.' << (version->low >> 16)
       << '.' << (version->low & 0xFFFF);
  return text.str();
}

TEST(VersionResource, GivesTheProductVersion) {
  const struct {
    Executable executable;
    const char* release;
  } cases[] = {
      {{.productversion = {1, 2, 3, 4}}, "1.2.3.4"},
      {{.productversion = {1, 2, 3, 4}, .wide = true}, "1.2.3.4"},
      {{.productversion = {0, 0, 0, 0}}, "0.0.0.0"},
      {{.productversion = {32768, 65535, 32767, 40000}}, "32768.65535.32767.40000"},
      {{.productversion = {4, 0, 0, 1}, .fileversion = {5, 6, 7, 8}, .wide = true}, "4.0.0.1"},
      {{.productversion = {1, 2, 3, 4}, .versionresource = false}, "none"},
      {{.productversion = {1, 2, 3, 4}, .wide = true, .versionresource = false}, "none"},
  };
  for (const auto& each : cases)
    EXPECT_EQ(releaseof(each.executable.bytes()), each.release);
}

TEST(VersionResource, FindsItAmongOthers) {
  auto bytes = sample.bytes();
  bytes.append(0x400, '\0');
  const std::size_t other = at.end;  // a directory of types in which three others come first
  put32(bytes, at.sectiontable + 16, 0x600);
  put16(bytes, other + 12, 1);  // one with a name, whose offset happens to be the wanted number
  put16(bytes, other + 14, 3);
  put32(bytes, other + 16, 16);
  put32(bytes, other + 24, 3);
  put32(bytes, other + 32, 16);
  put32(bytes, other + 36, 0x80000018);
  put32(bytes, other + 40, 24);
  put32(bytes, at.directories + 16, 0x1200);
  EXPECT_EQ(releaseof(bytes), "none") << "the offsets still count from the old directory";
  bytes.replace(other + 0x40, 0x60, bytes, at.names, 0x60);
  put32(bytes, other + 36, 0x80000040);
  put32(bytes, other + 0x40 + 20, 0x80000058);
  put32(bytes, other + 0x58 + 20, 0x70);
  EXPECT_EQ(releaseof(bytes), "1.2.3.4");
}

TEST(VersionResource, CutAnywhereGivesNothing) {
  for (const bool wide : {false, true}) {
    const auto bytes = Executable{.productversion = {1, 2, 3, 4}, .wide = wide}.bytes();
    const std::size_t needed = ExecutableLayout(wide).fixedinfo + 52;
    for (std::size_t length = 0; length < needed; ++length)
      ASSERT_EQ(releaseof(bytes.substr(0, length)), "none") << length;
    EXPECT_EQ(releaseof(bytes.substr(0, needed)), "1.2.3.4");
  }
}

TEST(VersionResource, DamageGivesNothing) {
  using Damage = std::function<void(std::string&)>;
  const auto set16 = [](std::size_t offset, std::uint16_t value) -> Damage {
    return [=](std::string& bytes) { put16(bytes, offset, value); };
  };
  const auto set32 = [](std::size_t offset, std::uint32_t value) -> Damage {
    return [=](std::string& bytes) { put32(bytes, offset, value); };
  };
  const struct {
    const char* what;
    Damage damage;
  } cases[] = {
      {"no MZ", set16(0, 0)},
      {"header beyond the file", set32(0x3C, 0xFFFFFFFF)},
      {"header near the end", set32(0x3C, 0x3FE)},
      {"header on itself", set32(0x3C, 0)},
      {"no PE", set16(at.header, 0)},
      {"no sections", set16(at.header + 6, 0)},
      {"small optional header", set16(at.header + 20, 96 + 2 * 8)},
      {"optional header that ends before the resources",
       [](std::string& bytes) {
         const std::size_t end = at.directories + 2 * 8;
         put16(bytes, at.header + 20, static_cast<std::uint16_t>(end - at.optional));
         bytes.replace(end + 8, 16, bytes, at.sectiontable + 8, 16);
       }},
      {"large optional header", set16(at.header + 20, 0xFFFF)},
      {"unknown kind of image", set16(at.optional, 0x107)},
      {"the other kind of image", set16(at.optional, 0x20B)},
      {"too few directories", set32(at.directories - 4, 2)},
      {"no resources", set32(at.directories + 16, 0)},
      {"resources outside the section", set32(at.directories + 16, 0xFFFFFFF0)},
      {"resources at the section's end", set32(at.directories + 16, 0x11FC)},
      {"section elsewhere in memory", set32(at.sectiontable + 12, 0x1001)},
      {"section without data", set32(at.sectiontable + 16, 0)},
      {"section beyond the file", set32(at.sectiontable + 20, 0xFFFFFE00)},
      {"no types", set16(at.types + 14, 0)},
      {"another type", set32(at.types + 16, 17)},
      {"a type named by a text", set32(at.types + 16, 0x80000010)},
      {"a type without names", set32(at.types + 20, 0x18)},
      {"names beyond the file", set32(at.types + 20, 0xFFFFFFFF)},
      {"no names", set16(at.names + 14, 0)},
      {"a name without languages", set32(at.names + 20, 0x30)},
      {"languages beyond the file", set32(at.names + 20, 0x80007FFF)},
      {"no languages", set16(at.languages + 14, 0)},
      {"a directory below the languages", set32(at.languages + 20, 0x80000048)},
      {"data entry beyond the file", set32(at.languages + 20, 0x7FFFFFFF)},
      {"names that lead back to the types", set32(at.types + 20, 0x80000000)},
      {"languages that lead back to the types", set32(at.names + 20, 0x80000000)},
      {"languages that lead to themselves", set32(at.languages + 20, 0x80000030)},
      {"data outside the section", set32(at.dataentry, 0x1F000000)},
      {"data before the section", set32(at.dataentry, 0x0FFF)},
      {"data beyond the section", set32(at.dataentry, 0x11F0)},
      {"data too short", set32(at.dataentry + 4, 91)},
      {"data longer than the section", set32(at.dataentry + 4, 0x1A9)},
      {"data of any length", set32(at.dataentry + 4, 0xFFFFFFFF)},
      {"block too short", set16(at.versioninfo, 91)},
      {"block without a value", set16(at.versioninfo + 2, 0)},
      {"value too short", set16(at.versioninfo + 2, 51)},
      {"another block", set16(at.versioninfo + 6, 'X')},
      {"a longer key", set16(at.versioninfo + 36, 'X')},
      {"no signature", set32(at.fixedinfo, 0xBD04EFFE)},
  };
  for (const auto& each : cases) {
    auto bytes = sample.bytes();
    each.damage(bytes);
    EXPECT_EQ(releaseof(bytes), "none") << each.what;
  }
}

TEST(VersionResource, WildCountsStayBounded) {
  auto bytes = sample.bytes();
  put16(bytes, at.types + 12, 65535);
  put16(bytes, at.types + 14, 65535);
  put16(bytes, at.header + 6, 65535);
  EXPECT_EQ(releaseof(bytes), "none");
  bytes.append(std::size_t{1} << 21, '\xFF');
  EXPECT_EQ(releaseof(bytes), "none");
}

TEST(VersionResource, EveryDamagedByteIsSurvived) {
  const auto whole = sample.bytes();
  for (std::size_t offset = 0; offset < at.fixedinfo + 52; ++offset) {
    for (const char value : {'\x00', '\x01', '\x7F', '\x80', '\xFF'}) {
      auto bytes = whole;
      bytes[offset] = value;
      const auto release = releaseof(bytes);
      const bool versionpart = offset >= at.fixedinfo + 16 && offset < at.fixedinfo + 24;
      EXPECT_TRUE(versionpart || release == "1.2.3.4" || release == "none") << offset;
    }
  }
}

TEST(VersionResource, UnreadableStreamsGiveNothing) {
  std::ifstream folder("/", std::ios::binary);
  EXPECT_FALSE(readproductversion(folder));
  std::ifstream missing("/no such folder/game.exe", std::ios::binary);
  EXPECT_FALSE(readproductversion(missing));
}

}  // namespace
