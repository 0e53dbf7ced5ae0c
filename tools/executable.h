// The bytes of a small PE file that holds a version resource and nothing else: stands in for a
// game's executable in the sample machines and in the tests.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

using VersionParts = std::array<std::uint16_t, 4>;  // highest part first

struct Executable {
  VersionParts product_version{};
  bool wide = false;             // PE32+ (64 bits) instead of PE32
  bool version_resource = true;  // else a file without sections

  std::string bytes() const;
};

// Where the parts of such a file lie, as offsets from its beginning.
struct ExecutableLayout {
  std::uint32_t header = 0x40;         // the PE signature
  std::uint32_t optional = 0x58;       // the optional header
  std::uint32_t directories;           // the first of the 16 data directories
  std::uint32_t section_table;         // the headers of the sections
  std::uint32_t resources = 0x200;     // the resource section, and in it:
  std::uint32_t types = 0x200;         //   the directory of types,
  std::uint32_t names = 0x218;         //   that of names,
  std::uint32_t languages = 0x230;     //   that of languages,
  std::uint32_t data_entry = 0x248;    //   the entry that names the data,
  std::uint32_t version_info = 0x258;  //   and VS_VERSIONINFO,
  std::uint32_t fixed_info = 0x280;    //   with VS_FIXEDFILEINFO in it
  std::uint32_t end = 0x400;           // the size of the file

  explicit constexpr ExecutableLayout(bool wide)
      : directories(optional + (wide ? 112 : 96)), section_table(directories + 16 * 8) {}
};

// Writes `value` over two or four bytes at `offset`, the lowest first.
void put16(std::string& bytes, std::size_t offset, std::uint16_t value);
void put32(std::string& bytes, std::size_t offset, std::uint32_t value);
