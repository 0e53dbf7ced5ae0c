// The two registry files of a Wine prefix: splits value paths, and changes the files.
#include "platform/prefix/registry.h"

#include "platform/letter_case.h"
#include "platform/prefix/prefix_files.h"
#include "platform/replacing.h"

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>

namespace {

namespace fs = std::filesystem;

// A decimal number of 32 bits, signed or unsigned.
std::optional<std::uint32_t> parse_number(const std::string& data) {
  std::int64_t number = 0;
  const char* const end = data.data() + data.size();
  const auto [stop, error] = std::from_chars(data.data(), end, number);
  const bool fits = number >= std::numeric_limits<std::int32_t>::min() &&
                    number <= std::numeric_limits<std::uint32_t>::max();
  if (error != std::errc{} || stop != end || !fits)
    return std::nullopt;
  return static_cast<std::uint32_t>(number);
}

std::string little_endian(std::uint32_t number) {
  std::string bytes;
  for (unsigned shift = 0; shift < 32; shift += 8)
    bytes += static_cast<char>(number >> shift);
  return bytes;
}

std::optional<RegistryValue> make_value(const std::string& data, const std::string& type) {
  using Type = RegistryValue::Type;
  const auto lowered = lowercase(type);
  if (lowered.empty() || lowered == "reg_sz")
    return RegistryValue{.type = Type::text, .text = data};
  if (lowered == "reg_expand_sz")
    return RegistryValue{.type = Type::expandable_text, .text = data};
  const auto number = parse_number(data);
  if (!number)
    return std::nullopt;
  if (lowered == "reg_dword")
    return RegistryValue{.type = Type::number, .number = *number};
  if (lowered != "reg_binary")
    return std::nullopt;
  return RegistryValue{.type = Type::binary, .bytes = little_endian(*number)};
}

}  // namespace

const std::string& Registry::Hive::read() {
  if (text)
    return *text;
  auto content = read_regular_file(file.string(), Files::max_file_size);
  if (!content && !content.failure().missing())
    failure = content.failure();
  text = content ? *std::move(content) : "";
  return *text;
}

// Like a map, the file is replaced in one step, and only if it is as it was read. A symlink stays,
// and its target is replaced.
bool Registry::Hive::change(const Edit& edit) {
  std::error_code missing;
  const auto real = fs::canonical(file, missing);
  throw_if_out_of_memory(missing.value());
  const std::string path = Paths::unix_namespace + (missing ? file : real).string();
  PrefixFiles files{Machine{file.parent_path().string(), "", ""}};
  static_cast<void>(files.list(path.substr(0, path.rfind('/')), "*"));  // removes stale temporaries
  auto opened = files.open_map(path);
  if (!opened && !opened.failure().missing())
    return false;
  const auto changed = edit(opened ? (*opened)->text : "");
  if (!changed)
    return false;
  text.reset();
  if (!opened)
    return bool(files.write(path, *changed));
  OpenMap& old = **opened;
  Replacement replacement{std::move(old.text), {{old.name, *changed}}, "", ""};
  ReplacementBatch batch(files);
  return batch.add(*std::move(opened), std::move(replacement)) && batch.commit().front();
}

Registry::Registry(const fs::path& machine)
    : local_machine{machine / "system.reg", {}}, current_user{machine / "user.reg", {}} {}

std::optional<Registry::Place> Registry::find_place(const std::string& value_path) {
  const auto first = value_path.find('\\');
  const auto last = value_path.rfind('\\');
  if (first == std::string::npos || value_path.find("\\\\") < last)
    return std::nullopt;
  const auto root = lowercase(value_path.substr(0, first));
  const bool of_machine = root == "hkey_local_machine" || root == "hklm";
  if (!of_machine && root != "hkey_current_user" && root != "hkcu")
    return std::nullopt;
  const auto key = first == last ? "" : value_path.substr(first + 1, last - first - 1);
  return Place{of_machine ? local_machine : current_user, key, value_path.substr(last + 1)};
}

std::optional<RegistryValue> Registry::read(const std::string& value_path) {
  const auto place = find_place(value_path);
  return place ? find_value(place->hive.read(), place->key, place->name) : std::nullopt;
}

bool Registry::is_32_bit() {
  return local_machine.read().find("\n#arch=win32") != std::string::npos;
}

bool Registry::write(const std::string& value_path, const std::string& data,
                     const std::string& type) {
  const auto place = find_place(value_path);
  const auto value = make_value(data, type);
  if (!place || !value)
    return false;
  return place->hive.change([&](std::string_view text) {
    return std::optional(with_value(text, place->key, place->name, *value));
  });
}

bool Registry::remove(const std::string& value_path) {
  const auto place = find_place(value_path);
  if (!place || (place->key.empty() && place->name.empty()))
    return false;
  return place->hive.change([&](std::string_view text) {
    auto changed = place->name.empty() ? without_key(text, place->key)
                                       : without_value(text, place->key, place->name);
    return changed == text ? std::nullopt : std::optional(std::move(changed));
  });
}
