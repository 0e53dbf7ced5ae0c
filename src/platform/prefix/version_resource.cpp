// Walks a PE file from its headers to the fixed part of its version resource. Names and offsets are
// those of the published PE format. Every step returns nullopt if the file lacks what it looks for.
#include "platform/prefix/version_resource.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

using Offset = std::uint64_t;  // from the start of the file; 64 bits, so that sums cannot overflow

constexpr std::uint32_t version_type = 16;  // RT_VERSION
constexpr std::uint32_t version_name = 1;   // VS_VERSION_INFO
constexpr std::uint32_t fixed_signature = 0xFEEF04BD;
constexpr std::uint32_t subdirectory = 0x80000000;  // flag of an entry that is a directory

// Reads numbers and byte strings at any offset of the file.
class Image {
public:
  explicit Image(std::istream& file) : stream(file) {}

  std::optional<std::uint16_t> word(Offset at) {
    const auto value = number<2>(at);
    return value ? std::optional(static_cast<std::uint16_t>(*value)) : std::nullopt;
  }

  std::optional<std::uint32_t> dword(Offset at) { return number<4>(at); }

  bool holds(Offset at, std::string_view expected) {
    std::array<char, 32> found{};
    return expected.size() <= found.size() && read(at, found.data(), expected.size()) &&
           std::equal(expected.begin(), expected.end(), found.begin());
  }

private:
  template <std::size_t size> std::optional<std::uint32_t> number(Offset at) {
    std::array<char, size> bytes{};
    if (!read(at, bytes.data(), size))
      return std::nullopt;
    std::uint32_t value = 0;
    for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte)
      value = value << 8 | static_cast<unsigned char>(*byte);
    return value;
  }

  bool read(Offset at, char* into, std::size_t size) {
    stream.clear();
    stream.seekg(static_cast<std::streamoff>(at));
    return stream.read(into, static_cast<std::streamsize>(size)).good();
  }

  std::istream& stream;
};

struct Headers {
  Offset section_table;
  std::uint16_t sections;
  std::uint32_t resources;  // address of the resources in memory
};

std::optional<Headers> read_headers(Image& image) {
  if (!image.holds(0, "MZ"))
    return std::nullopt;
  const auto start = image.dword(0x3C);  // e_lfanew
  if (!start || !image.holds(*start, std::string_view("PE\0\0", 4)))
    return std::nullopt;
  const auto sections = image.word(*start + Offset{6});
  const auto optional_size = image.word(*start + Offset{20});
  const Offset optional_header = *start + Offset{24};
  const auto magic = image.word(optional_header);
  if (!sections || !optional_size || !magic || (*magic != 0x10B && *magic != 0x20B))
    return std::nullopt;
  const Offset directories = *magic == 0x20B ? 112 : 96;  // PE32+ has wider fields before them
  const Offset resource_directory = directories + 2 * 8;  // the third: eight bytes each
  const auto count = image.dword(optional_header + directories - 4);
  const auto resources = image.dword(optional_header + resource_directory);
  if (!count || *count < 3 || resource_directory + 8 > *optional_size)
    return std::nullopt;
  if (!resources || *resources == 0)
    return std::nullopt;
  return Headers{optional_header + *optional_size, *sections, *resources};
}

// The file offset of `size` bytes at an address in memory, if one section contains them all.
std::optional<Offset> find_address(Image& image, const Headers& headers, Offset address,
                                   Offset size) {
  for (std::uint16_t i = 0; i < headers.sections; ++i) {
    const Offset section = headers.section_table + Offset{40} * i;
    const auto start = image.dword(section + 12);
    const auto length = image.dword(section + 16);
    const auto data = image.dword(section + 20);
    if (!start || !length || !data)
      return std::nullopt;
    if (address >= *start && address - *start + size <= *length)
      return *data + (address - *start);
  }
  return std::nullopt;
}

// The target of a resource directory's numbered entry whose number ranks lowest, the first of
// those. `rank` gives nullopt for a number that will not do.
template <typename Rank>
std::optional<std::uint32_t> find_entry(Image& image, Offset directory, Rank rank) {
  const auto named = image.word(directory + 12);
  const auto numbered = image.word(directory + 14);
  if (!named || !numbered)
    return std::nullopt;
  std::optional<int> lowest;
  Offset best = 0;
  for (std::uint16_t i = 0; i < *numbered; ++i) {
    const Offset entry = directory + 16 + Offset{8} * (Offset{*named} + i);
    const auto found = image.dword(entry);
    if (!found)
      return std::nullopt;
    const std::optional<int> ranked = rank(*found);
    if (!ranked || (lowest && *lowest <= *ranked))
      continue;
    lowest = ranked;
    best = entry;
  }
  return lowest ? image.dword(best + 4) : std::nullopt;
}

std::optional<std::uint32_t> find_number(Image& image, Offset directory, std::uint32_t number) {
  return find_entry(image, directory, [&](std::uint32_t found) {
    return found == number ? std::optional(0) : std::nullopt;
  });
}

// How early Windows takes a language: the neutral one, English of the United States, other English,
// then the first of the others.
std::optional<int> language_rank(std::uint32_t language) {
  constexpr std::uint32_t primary = 0x3FF, english = 0x09, united_states = 0x0409;
  if (language == 0)
    return 0;
  if (language == united_states)
    return 1;
  return (language & primary) == english ? 2 : 3;
}

// The data entry of the version resource: below the type comes a name, below that a language.
std::optional<Offset> find_data_entry(Image& image, Offset resources) {
  const auto names = find_number(image, resources, version_type);
  if (!names || !(*names & subdirectory))
    return std::nullopt;
  const auto languages = find_number(image, resources + (*names & ~subdirectory), version_name);
  if (!languages || !(*languages & subdirectory))
    return std::nullopt;
  const auto entry = find_entry(image, resources + (*languages & ~subdirectory), language_rank);
  if (!entry || (*entry & subdirectory))
    return std::nullopt;
  return resources + *entry;
}

// VS_FIXEDFILEINFO in VS_VERSIONINFO: after three words and the key, aligned to 4 bytes.
std::optional<Offset> find_fixed_info(Image& image, Offset block) {
  using namespace std::string_view_literals;
  constexpr auto key = "V\0S\0_\0V\0E\0R\0S\0I\0O\0N\0_\0I\0N\0F\0O\0\0\0"sv;
  const auto length = image.word(block);
  const auto value_length = image.word(block + 2);
  if (!length || *length < 92 || !value_length || *value_length < 52)
    return std::nullopt;
  if (!image.holds(block + 6, key))
    return std::nullopt;
  if (image.dword(block + 40) != fixed_signature)
    return std::nullopt;
  return block + 40;
}

}  // namespace

std::optional<ProductVersion> read_product_version(std::istream& executable) {
  Image image(executable);
  const auto headers = read_headers(image);
  if (!headers)
    return std::nullopt;
  const auto resources = find_address(image, *headers, headers->resources, 16);
  if (!resources)
    return std::nullopt;
  const auto entry = find_data_entry(image, *resources);
  if (!entry)
    return std::nullopt;
  const auto address = image.dword(*entry);
  const auto size = image.dword(*entry + 4);
  if (!address || !size || *size < 92)
    return std::nullopt;
  const auto block = find_address(image, *headers, *address, *size);
  if (!block)
    return std::nullopt;
  const auto fixed = find_fixed_info(image, *block);
  if (!fixed)
    return std::nullopt;
  const auto high = image.dword(*fixed + 16);
  const auto low = image.dword(*fixed + 20);
  const bool whole = high && low && image.dword(*fixed + 48);
  return whole ? std::optional(ProductVersion{*high, *low}) : std::nullopt;
}
