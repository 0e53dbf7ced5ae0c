// Lays out the file: headers, and one section that holds the three levels of resource directories,
// their data entry and the version block.
#include "executable.h"

#include <initializer_list>
#include <string_view>

namespace {

constexpr std::uint32_t resource_address = 0x1000;  // where the section lies in memory
constexpr std::uint32_t subdirectory = 0x80000000;

// A number of two or four bytes. What a shorter one overwrites with zeros comes after it.
struct Field {
  std::uint32_t offset, value;
};

void put_fields(std::string& bytes, std::uint32_t start, std::initializer_list<Field> fields) {
  for (const Field& field : fields)
    put32(bytes, start + field.offset, field.value);
}

void put_headers(std::string& bytes, const ExecutableLayout& at, const Executable& options) {
  const bool wide = options.wide, section = options.version_resource;
  put_fields(bytes, 0, {{0, 'M' | 'Z' << 8}, {0x3C, at.header}});
  put_fields(bytes, at.header,
             {{0, 'P' | 'E' << 8},
              {4, wide ? 0x8664u : 0x014Cu},  // the processor
              {6, section ? 1u : 0u},         // the number of sections
              {20, at.section_table - at.optional},
              {22, wide ? 0x0022u : 0x0102u}});  // an executable image
  put_fields(bytes, at.optional,
             {{0, wide ? 0x20Bu : 0x10Bu},
              {wide ? 24u : 28u, 0x400000},       // the preferred address
              {32, 0x1000},                       // alignment in memory
              {36, 0x200},                        // alignment in the file
              {40, 6},                            // the least system, 6.0
              {48, 6},                            // the least subsystem, 6.0
              {56, section ? 0x2000u : 0x1000u},  // size in memory
              {60, 0x200},                        // size of the headers
              {68, 2}});                          // a program with windows
  put32(bytes, at.directories - 4, 16);           // the number of directories
}

void put_section(std::string& bytes, const ExecutableLayout& at) {
  const std::uint32_t size = at.end - at.resources;
  put_fields(bytes, at.directories + 2 * 8, {{0, resource_address}, {4, size}});
  bytes.replace(at.section_table, 5, ".rsrc");
  put_fields(bytes, at.section_table,
             {{8, size},  // in memory
              {12, resource_address},
              {16, size},  // in the file
              {20, at.resources},
              {36, 0x40000040}});  // readable data
  // Directories of one numbered entry each.
  const auto inside = [&](std::uint32_t offset) { return offset - at.resources; };
  put_fields(bytes, at.types, {{14, 1}, {16, 16}, {20, inside(at.names) | subdirectory}});
  put_fields(bytes, at.names, {{14, 1}, {16, 1}, {20, inside(at.languages) | subdirectory}});
  put_fields(bytes, at.languages, {{14, 1}, {16, 0x0409}, {20, inside(at.data_entry)}});
  put_fields(bytes, at.data_entry, {{0, resource_address + inside(at.version_info)}, {4, 92}});
}

void put_version(std::string& bytes, const ExecutableLayout& at, const VersionParts& product) {
  const auto joined = [](std::uint32_t high, std::uint32_t low) { return high << 16 | low; };
  constexpr std::string_view key = "VS_VERSION_INFO";
  put_fields(bytes, at.version_info, {{0, 92}, {2, 52}});  // the lengths of the block, of its value
  for (std::size_t i = 0; i < key.size(); ++i)
    put16(bytes, at.version_info + 6 + 2 * i, static_cast<std::uint16_t>(key[i]));
  put_fields(bytes, at.fixed_info,
             {{0, 0xFEEF04BD},
              {4, 0x00010000},    // the record's own version
              {8, joined(9, 8)},  // the file's version: taking it for the product's shows
              {12, joined(7, 6)},
              {16, joined(product[0], product[1])},
              {20, joined(product[2], product[3])},
              {24, 0x3F},     // all flags are valid
              {32, 0x40004},  // for Windows NT
              {36, 1}});      // an application
}

}  // namespace

void put16(std::string& bytes, std::size_t offset, std::uint16_t value) {
  bytes.at(offset) = static_cast<char>(value & 0xFF);
  bytes.at(offset + 1) = static_cast<char>(value >> 8);
}

void put32(std::string& bytes, std::size_t offset, std::uint32_t value) {
  put16(bytes, offset, static_cast<std::uint16_t>(value & 0xFFFF));
  put16(bytes, offset + 2, static_cast<std::uint16_t>(value >> 16));
}

std::string Executable::bytes() const {
  const ExecutableLayout at(wide);
  std::string bytes(version_resource ? at.end : at.resources, '\0');
  put_headers(bytes, at, *this);
  if (version_resource) {
    put_section(bytes, at);
    put_version(bytes, at, product_version);
  }
  return bytes;
}
