// The version reader against executables made here: whole ones, and ones damaged in every way that
// an untrusted file may be.
#include "platform/prefix/version_resource.h"

#include "tools/executable.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

const Executable sample{.product_version = {1, 2, 3, 4}};
const ExecutableLayout at(false);

std::string release_of(const std::string& bytes) {
  std::istringstream stream(bytes);
  const auto version = read_product_version(stream);
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
      {{.product_version = {1, 2, 3, 4}}, "1.2.3.4"},
      {{.product_version = {1, 2, 3, 4}, .wide = true}, "1.2.3.4"},
      {{.product_version = {0, 0, 0, 0}}, "0.0.0.0"},
      {{.product_version = {32768, 65535, 32767, 40000}}, "32768.65535.32767.40000"},
      {{.product_version = {4, 0, 0, 1}, .file_version = {5, 6, 7, 8}, .wide = true}, "4.0.0.1"},
      {{.product_version = {1, 2, 3, 4}, .version_resource = false}, "none"},
      {{.product_version = {1, 2, 3, 4}, .wide = true, .version_resource = false}, "none"},
  };
  for (const auto& each : cases)
    EXPECT_EQ(release_of(each.executable.bytes()), each.release);
}

TEST(VersionResource, FindsItAmongOthers) {
  auto bytes = sample.bytes();
  bytes.append(0x400, '\0');
  const std::size_t other = at.end;  // a directory of types in which three others come first
  put32(bytes, at.section_table + 16, 0x600);
  put16(bytes, other + 12, 1);  // one with a name, whose offset happens to be the wanted number
  put16(bytes, other + 14, 3);
  put32(bytes, other + 16, 16);
  put32(bytes, other + 24, 3);
  put32(bytes, other + 32, 16);
  put32(bytes, other + 36, 0x80000018);
  put32(bytes, other + 40, 24);
  put32(bytes, at.directories + 16, 0x1200);
  EXPECT_EQ(release_of(bytes), "none") << "the offsets still count from the old directory";
  bytes.replace(other + 0x40, 0x60, bytes, at.names, 0x60);
  put32(bytes, other + 36, 0x80000040);
  put32(bytes, other + 0x40 + 20, 0x80000058);
  put32(bytes, other + 0x58 + 20, 0x70);
  EXPECT_EQ(release_of(bytes), "1.2.3.4");
}

TEST(VersionResource, CutAnywhereGivesNothing) {
  for (const bool wide : {false, true}) {
    const auto bytes = Executable{.product_version = {1, 2, 3, 4}, .wide = wide}.bytes();
    const std::size_t needed = ExecutableLayout(wide).fixed_info + 52;
    for (std::size_t length = 0; length < needed; ++length)
      ASSERT_EQ(release_of(bytes.substr(0, length)), "none") << length;
    EXPECT_EQ(release_of(bytes.substr(0, needed)), "1.2.3.4");
  }
}

TEST(VersionResource, DamageGivesNothing) {
  const struct {
    const char* what;
    std::size_t offset;
    std::uint32_t value;
    bool wide = true;  // four bytes, not two
  } cases[] = {
      {"no MZ", 0, 0, false},
      {"header beyond the file", 0x3C, 0xFFFFFFFF},
      {"no PE", at.header, 0, false},
      {"no sections", at.header + 6, 0, false},
      {"small optional header", at.header + 20, 96 + 2 * 8, false},
      {"unknown kind of image", at.optional, 0x107, false},
      {"the other kind of image", at.optional, 0x20B, false},
      {"too few directories", at.directories - 4, 2},
      {"no resources", at.directories + 16, 0},
      {"resources outside the section", at.directories + 16, 0xFFFFFFF0},
      {"resources at the section's end", at.directories + 16, 0x11FC},
      {"section elsewhere in memory", at.section_table + 12, 0x1001},
      {"section without data", at.section_table + 16, 0},
      {"section beyond the file", at.section_table + 20, 0xFFFFFE00},
      {"no types", at.types + 14, 0, false},
      {"another type", at.types + 16, 17},
      {"a type without names", at.types + 20, 0x18},
      {"names beyond the file", at.types + 20, 0xFFFFFFFF},
      {"no names", at.names + 14, 0, false},
      {"a name without languages", at.names + 20, 0x30},
      {"no languages", at.languages + 14, 0, false},
      {"names that lead back to the types", at.types + 20, 0x80000000},
      {"data beyond the section", at.data_entry, 0x11F0},
      {"data too short", at.data_entry + 4, 91},
      {"data longer than the section", at.data_entry + 4, 0x1A9},
      {"data of any length", at.data_entry + 4, 0xFFFFFFFF},
      {"block too short", at.version_info, 91, false},
      {"block without a value", at.version_info + 2, 0, false},
      {"value too short", at.version_info + 2, 51, false},
      {"another block", at.version_info + 6, 'X', false},
      {"a longer key", at.version_info + 36, 'X', false},
      {"no signature", at.fixed_info, 0xBD04EFFE},
  };
  for (const auto& each : cases) {
    auto bytes = sample.bytes();
    if (each.wide)
      put32(bytes, each.offset, each.value);
    else
      put16(bytes, each.offset, static_cast<std::uint16_t>(each.value));
    EXPECT_EQ(release_of(bytes), "none") << each.what;
  }
}

TEST(VersionResource, TheOptionalHeaderMustReachTheResources) {
  auto bytes = sample.bytes();
  const std::size_t end = at.directories + 2 * 8;
  put16(bytes, at.header + 20, static_cast<std::uint16_t>(end - at.optional));
  bytes.replace(end + 8, 16, bytes, at.section_table + 8, 16);
  EXPECT_EQ(release_of(bytes), "none");
}

TEST(VersionResource, WildCountsStayBounded) {
  auto bytes = sample.bytes();
  put16(bytes, at.types + 12, 65535);
  put16(bytes, at.types + 14, 65535);
  put16(bytes, at.header + 6, 65535);
  EXPECT_EQ(release_of(bytes), "none");
  bytes.append(std::size_t{1} << 21, '\xFF');
  EXPECT_EQ(release_of(bytes), "none");
}

}  // namespace
