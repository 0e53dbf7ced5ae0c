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

struct ValuePath {
  std::string root;
  std::string key;
  std::string name;  // empty for the key itself
};

// Nullopt for a path without a root, or with an empty component in its key.
std::optional<ValuePath> parse_value_path(const std::string& path) {
  const auto first = path.find('\\');
  if (first == std::string::npos)
    return std::nullopt;
  const auto last = path.rfind('\\');
  const auto key = last == first ? std::string() : path.substr(first + 1, last - first - 1);
  const bool has_empty_name =
      last != first && ("\\" + key + "\\").find("\\\\") != std::string::npos;
  if (has_empty_name)
    return std::nullopt;
  return ValuePath{path.substr(0, first), key, path.substr(last + 1)};
}

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

Registry::Hive* Registry::find_hive(const std::string& root) {
  const auto lowered = lowercase(root);
  if (lowered == "hkey_local_machine" || lowered == "hklm")
    return &local_machine;
  if (lowered == "hkey_current_user" || lowered == "hkcu")
    return &current_user;
  return nullptr;
}

std::optional<RegistryValue> Registry::read(const std::string& value_path) {
  const auto path = parse_value_path(value_path);
  if (!path)
    return std::nullopt;
  Hive* const hive = find_hive(path->root);
  if (!hive)
    return std::nullopt;
  return find_value(hive->read(), path->key, path->name);
}

bool Registry::is_32_bit() {
  return local_machine.read().find("\n#arch=win32") != std::string::npos;
}

bool Registry::write(const std::string& value_path, const std::string& data,
                     const std::string& type) {
  const auto path = parse_value_path(value_path);
  const auto value = make_value(data, type);
  if (!path || !value)
    return false;
  Hive* const hive = find_hive(path->root);
  if (!hive)
    return false;
  return hive->change([&place = *path, &written = *value](std::string_view text) {
    return std::optional(with_value(text, place.key, place.name, written));
  });
}

bool Registry::remove(const std::string& value_path) {
  const auto path = parse_value_path(value_path);
  if (!path || (path->key.empty() && path->name.empty()))
    return false;
  Hive* const hive = find_hive(path->root);
  if (!hive)
    return false;
  return hive->change([&place = *path](std::string_view text) {
    auto changed = place.name.empty() ? without_key(text, place.key)
                                      : without_value(text, place.key, place.name);
    return changed == text ? std::nullopt : std::optional(std::move(changed));
  });
}
