// Lays out the file: headers, and one section that holds the three levels of resource directories,
// their data entry and the version block.
#include "executable.h"

#include <string_view>

namespace {

constexpr std::uint32_t resource_address = 0x1000;  // where the section lies in memory
constexpr std::uint32_t subdirectory = 0x80000000;

void put_text(std::string& bytes, std::size_t offset, std::string_view text) {
  bytes.replace(offset, text.size(), text);
}

void put_headers(std::string& bytes, const ExecutableLayout& at, const Executable& options) {
  put_text(bytes, 0, "MZ");
  put32(bytes, 0x3C, static_cast<std::uint32_t>(at.header));
  put_text(bytes, at.header, "PE");
  put16(bytes, at.header + 4, options.wide ? 0x8664 : 0x014C);    // the processor
  put16(bytes, at.header + 6, options.version_resource ? 1 : 0);  // the number of sections
  put16(bytes, at.header + 20, static_cast<std::uint16_t>(at.section_table - at.optional));
  put16(bytes, at.header + 22, options.wide ? 0x0022 : 0x0102);  // an executable image
}

void put_optional(std::string& bytes, const ExecutableLayout& at, const Executable& options) {
  put16(bytes, at.optional, options.wide ? 0x20B : 0x10B);
  put32(bytes, at.optional + (options.wide ? 24 : 28), 0x400000);  // the preferred address
  put32(bytes, at.optional + 32, 0x1000);                          // alignment in memory
  put32(bytes, at.optional + 36, 0x200);                           // alignment in the file
  put16(bytes, at.optional + 40, 6);                               // the least system, 6.0
  put16(bytes, at.optional + 48, 6);                               // the least subsystem, 6.0
  put32(bytes, at.optional + 56, options.version_resource ? 0x2000 : 0x1000);  // size in memory
  put32(bytes, at.optional + 60, 0x200);  // size of the headers
  put16(bytes, at.optional + 68, 2);      // a program with windows
  put32(bytes, at.directories - 4, 16);   // the number of directories
}

void put_section(std::string& bytes, const ExecutableLayout& at) {
  const auto size = static_cast<std::uint32_t>(at.end - at.resources);
  put32(bytes, at.directories + 2 * 8, resource_address);
  put32(bytes, at.directories + 2 * 8 + 4, size);
  put_text(bytes, at.section_table, ".rsrc");
  put32(bytes, at.section_table + 8, size);  // in memory
  put32(bytes, at.section_table + 12, resource_address);
  put32(bytes, at.section_table + 16, size);  // in the file
  put32(bytes, at.section_table + 20, static_cast<std::uint32_t>(at.resources));
  put32(bytes, at.section_table + 36, 0x40000040);  // readable data
}

// A resource directory of one numbered entry.
void put_directory(std::string& bytes, std::size_t offset, std::uint32_t number,
                   std::uint32_t target) {
  put16(bytes, offset + 14, 1);
  put32(bytes, offset + 16, number);
  put32(bytes, offset + 20, target);
}

void put_directories(std::string& bytes, const ExecutableLayout& at) {
  const auto inside = [&](std::size_t offset) {
    return static_cast<std::uint32_t>(offset - at.resources);
  };
  put_directory(bytes, at.types, 16, inside(at.names) | subdirectory);     // RT_VERSION
  put_directory(bytes, at.names, 1, inside(at.languages) | subdirectory);  // VS_VERSION_INFO
  put_directory(bytes, at.languages, 0x0409, inside(at.data_entry));       // English
  put32(bytes, at.data_entry, resource_address + inside(at.version_info));
  put32(bytes, at.data_entry + 4, 92);
}

void put_version(std::string& bytes, std::size_t offset, const VersionParts& parts) {
  put16(bytes, offset + 2, parts[0]);  // two doublewords, the higher part in the higher half
  put16(bytes, offset, parts[1]);
  put16(bytes, offset + 6, parts[2]);
  put16(bytes, offset + 4, parts[3]);
}

void put_version_info(std::string& bytes, const ExecutableLayout& at, const Executable& options) {
  put16(bytes, at.version_info, 92);      // the block's length
  put16(bytes, at.version_info + 2, 52);  // that of its value
  std::size_t letter = at.version_info + 6;
  for (const char c : std::string_view("VS_VERSION_INFO")) {
    put16(bytes, letter, static_cast<std::uint16_t>(c));
    letter += 2;
  }
  put32(bytes, at.fixed_info, 0xFEEF04BD);
  put32(bytes, at.fixed_info + 4, 0x00010000);  // the record's own version
  put_version(bytes, at.fixed_info + 8, options.file_version);
  put_version(bytes, at.fixed_info + 16, options.product_version);
  put32(bytes, at.fixed_info + 24, 0x3F);     // all flags are valid
  put32(bytes, at.fixed_info + 32, 0x40004);  // for Windows NT
  put32(bytes, at.fixed_info + 36, 1);        // an application
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
  put_optional(bytes, at, *this);
  if (!version_resource)
    return bytes;
  put_section(bytes, at);
  put_directories(bytes, at);
  put_version_info(bytes, at, *this);
  return bytes;
}
