// Walks a PE file from its headers to the fixed part of its version resource. Names and offsets are
// those of the published PE format. Every step throws `Lacking` if the file lacks what it looks
// for.
#include "platform/prefix/version_resource.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

using namespace std::string_view_literals;
using Offset = std::uint64_t;  // from the start of the file; 64 bits, so that sums cannot overflow

constexpr std::uint32_t version_type = 16;  // RT_VERSION
constexpr std::uint32_t version_name = 1;   // VS_VERSION_INFO
constexpr std::uint32_t fixed_signature = 0xFEEF04BD;
constexpr std::uint32_t subdirectory = 0x80000000;  // flag of an entry that is a directory

struct Lacking {};

void require(bool given) {
  if (!given)
    throw Lacking();
}

// Reads numbers and byte strings at any offset of the file.
class Image {
public:
  explicit Image(std::istream& file) : stream(file) {}

  std::uint32_t word(Offset at) { return number(bytes(at, 2)); }
  std::uint32_t dword(Offset at) { return number(bytes(at, 4)); }
  bool holds(Offset at, std::string_view expected) {
    return bytes(at, expected.size()) == expected;
  }

private:
  static std::uint32_t number(std::string_view little_endian) {
    std::uint32_t value = 0;
    for (; !little_endian.empty(); little_endian.remove_suffix(1))
      value = value << 8 | static_cast<unsigned char>(little_endian.back());
    return value;
  }

  std::string bytes(Offset at, std::size_t size) {
    std::string found(size, '\0');
    stream.clear();
    stream.seekg(static_cast<std::streamoff>(at));
    require(stream.read(found.data(), static_cast<std::streamsize>(size)).good());
    return found;
  }

  std::istream& stream;
};

struct Headers {
  Offset section_table;
  std::uint32_t sections;
  std::uint32_t resources;  // address of the resources in memory
};

Headers read_headers(Image& image) {
  require(image.holds(0, "MZ"));
  const Offset start = image.dword(0x3C);  // e_lfanew
  require(image.holds(start, "PE\0\0"sv));
  const Offset optional_header = start + 24;
  const auto optional_size = image.word(start + 20);
  const auto magic = image.word(optional_header);
  require(magic == 0x10B || magic == 0x20B);
  const Offset directories = magic == 0x20B ? 112 : 96;   // PE32+ has wider fields before them
  const Offset resource_directory = directories + 2 * 8;  // the third: eight bytes each
  require(image.dword(optional_header + directories - 4) >= 3);
  require(resource_directory + 8 <= optional_size);
  const auto resources = image.dword(optional_header + resource_directory);
  require(resources != 0);
  return {optional_header + optional_size, image.word(start + 6), resources};
}

// The file offset of `size` bytes at an address in memory, which one section contains.
Offset find_address(Image& image, const Headers& headers, Offset address, Offset size) {
  for (std::uint32_t i = 0; i < headers.sections; ++i) {
    const Offset section = headers.section_table + Offset{40} * i;
    const Offset start = image.dword(section + 12);
    const Offset length = image.dword(section + 16);
    const Offset data = image.dword(section + 20);
    if (address >= start && address - start + size <= length)
      return data + (address - start);
  }
  throw Lacking();
}

// The target of a resource directory's entry of that number, or of its first numbered one.
Offset find_entry(Image& image, Offset directory, std::optional<std::uint32_t> number) {
  const Offset named = image.word(directory + 12);
  const Offset numbered = image.word(directory + 14);
  for (Offset i = named; i < named + numbered; ++i) {
    const Offset entry = directory + 16 + 8 * i;
    if (!number || image.dword(entry) == *number)
      return image.dword(entry + 4);
  }
  throw Lacking();
}

// The directory below the entry of that number.
Offset find_directory(Image& image, Offset resources, Offset directory, std::uint32_t number) {
  const Offset target = find_entry(image, directory, number);
  require(target & subdirectory);
  return resources + (target & ~subdirectory);
}

// The data entry of the version resource: below the type comes a name, below that a language.
Offset find_data_entry(Image& image, Offset resources) {
  const Offset names = find_directory(image, resources, resources, version_type);
  const Offset languages = find_directory(image, resources, names, version_name);
  const Offset entry = find_entry(image, languages, std::nullopt);
  require(!(entry & subdirectory));
  return resources + entry;
}

// VS_FIXEDFILEINFO in VS_VERSIONINFO: after three words and the key, aligned to 4 bytes.
Offset find_fixed_info(Image& image, Offset block) {
  constexpr auto key = "V\0S\0_\0V\0E\0R\0S\0I\0O\0N\0_\0I\0N\0F\0O\0\0\0"sv;
  require(image.word(block) >= 92 && image.word(block + 2) >= 52);
  require(image.holds(block + 6, key) && image.dword(block + 40) == fixed_signature);
  return block + 40;
}

}  // namespace

std::optional<ProductVersion> read_product_version(std::istream& executable) try {
  Image image(executable);
  const Headers headers = read_headers(image);
  const Offset resources = find_address(image, headers, headers.resources, 16);
  const Offset entry = find_data_entry(image, resources);
  const auto size = image.dword(entry + 4);
  require(size >= 92);
  const Offset block = find_address(image, headers, image.dword(entry), size);
  const Offset fixed = find_fixed_info(image, block);
  image.dword(fixed + 48);  // its last field must be there
  return ProductVersion{image.dword(fixed + 16), image.dword(fixed + 20)};
} catch (const Lacking&) {
  return std::nullopt;
}
