// The two registry files of a Wine prefix: splits value paths, and replaces a changed file in one
// step, so that a failure leaves the old registry whole.
#include "platform/prefix/registry.h"

#include "platform/files.h"
#include "platform/prefix/descriptor.h"
#include "platform/prefix/folder_names.h"
#include "platform/prefix/letter_case.h"
#include "platform/prefix/prefix_map.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>

namespace {

namespace fs = std::filesystem;

// False if another run holds the lock. File systems without locks do not matter here.
bool lock(const Descriptor& file) {
  return file.disk().lock(file.get()) == 0 || errno != EWOULDBLOCK;
}

bool write_flushed(const Descriptor& file, std::string_view text, mode_t permissions) {
  return file && lock(file) && write_all(file, text) &&
         file.disk().permit(file.get(), permissions) == 0 && ::fsync(file.get()) == 0;
}

// Replaces a file in one step, by renaming a temporary file over it. Like those of maps, the
// temporary file is locked, and stale ones are removed. Follows a symlink and replaces its target.
bool replace_file(const fs::path& file, std::string_view text) {
  std::error_code missing;
  const auto real = fs::canonical(file, missing);
  throw_if_out_of_memory(missing.value());
  const auto& target = missing ? file : real;
  struct stat status{};
  const bool exists = ::stat(target.c_str(), &status) == 0;
  Disk& disk = system_disk();
  const auto folder = open_path(disk, target.parent_path().string(), O_RDONLY | O_DIRECTORY);
  for_each_name(folder, [&](const char* name, unsigned char) {
    if (OpenMap::is_temporary(name))
      remove_stale_temporary(folder, name);
  });
  const auto temporary = OpenMap::temporary_name();
  const auto descriptor = open_at(folder, temporary, O_WRONLY | O_CREAT | O_EXCL, 0600);
  const bool replaced =
      write_flushed(descriptor, text, exists ? status.st_mode & 07777 : 0644) &&
      disk.rename(folder.get(), temporary.c_str(), target.filename().c_str(), 0) == 0;
  if (descriptor && !replaced)
    disk.remove(folder.get(), temporary.c_str());
  ::fsync(folder.get());  // some file systems refuse this; the file itself is safe
  return replaced;
}

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

bool Registry::Hive::change(const Edit& edit) {
  std::error_code ignored;
  const bool missing = fs::symlink_status(file, ignored).type() == fs::file_type::not_found;
  const auto old =
      missing ? Result<std::string>("") : read_regular_file(file.string(), Files::max_file_size);
  if (!old)
    return false;
  const auto changed = edit(*old);
  if (!changed || !replace_file(file, *changed))
    return false;
  text.reset();
  return true;
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
