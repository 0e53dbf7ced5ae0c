// Keeps the two registry files of a machine in a folder: takes value paths apart and replaces a
// changed file in one step, so that a failure leaves the old registry whole.
#include "platform/prefix/registry.h"

#include "platform/files.h"
#include "platform/prefix/handle.h"
#include "platform/prefix/letter_case.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <utility>

namespace {

namespace fs = std::filesystem;

// A file beside `target` that takes its place once it is whole, or vanishes.
class Sibling {
public:
  explicit Sibling(const fs::path& target)
      : name(target.string() + ".XXXXXX"),
        handle(system_disk(), ::mkostemp(name.data(), O_CLOEXEC)), made(handle) {}
  ~Sibling() {
    if (made)
      ::unlink(name.c_str());
  }
  Sibling(const Sibling&) = delete;
  Sibling& operator=(const Sibling&) = delete;

  bool replace(const fs::path& target, std::string_view text, mode_t permissions) {
    if (!made || !write_all(handle, text))
      return false;
    if (::fchmod(handle.get(), permissions) != 0 || ::fsync(handle.get()) != 0)
      return false;
    if (!handle.close() || ::rename(name.c_str(), target.c_str()) != 0)
      return false;
    made = false;
    return true;
  }

private:
  std::string name;
  Handle handle;
  bool made;  // and still there under its own name
};

constexpr std::size_t piece_size = 1 << 16;  // in bytes: few enough for the processor's own memory

// The open file and its size; no handle when it cannot be opened, is no ordinary file or larger
// than any file may be.
std::pair<Handle, std::size_t> open_file(const fs::path& file) {
  auto handle = open_path(system_disk(), file.string(), O_RDONLY | O_NONBLOCK);
  struct stat status {};
  if (!handle || !describe(handle, status) || !S_ISREG(status.st_mode) ||
      status.st_size > Files::max_file_size)
    return {};
  return {std::move(handle), static_cast<std::size_t>(status.st_size)};
}

// Nothing when the file cannot be read.
std::optional<std::string> read_file(const fs::path& file) {
  const auto [handle, size] = open_file(file);
  std::string text(size, '\0');
  const auto length = handle ? read_all(handle, text.data(), size) : std::nullopt;
  if (!length)
    return std::nullopt;
  text.resize(*length);
  return text;
}

// What a file has of a key and those beside it; the empty text when it cannot be read. The file
// passes through a small buffer, in pieces that end where a key begins: to touch new memory for all
// of it would take several times as long.
std::string read_keys(const fs::path& file, const std::string& key) {
  const auto [handle, size] = open_file(file);
  std::string sections, buffer(std::min(size, piece_size), '\0');
  for (std::size_t filled = 0, done = 0; handle && done < size;) {
    const std::size_t wanted = std::min(buffer.size() - filled, size - done);
    const auto length = read_all(handle, buffer.data() + filled, wanted, done);
    if (!length)
      return "";
    done = *length < wanted ? size : done + wanted;
    const std::string_view text(buffer.data(), filled + *length);
    const std::size_t end = done == size ? text.size() : find_last_key(text, filled);
    append_sibling_keys(text.substr(0, end), key, sections);
    filled = text.size() - end;
    std::copy(text.begin() + static_cast<std::ptrdiff_t>(end), text.end(), buffer.begin());
    if (filled == buffer.size())
      buffer.resize(std::min(2 * buffer.size(), size));
  }
  return sections;
}

// Puts `text` in the file's place in one step; a link stays and its target is replaced.
bool replace_file(const fs::path& file, std::string_view text) {
  std::error_code missing;
  const auto real = fs::canonical(file, missing);
  const auto& target = missing ? file : real;
  struct stat status {};
  const bool exists = ::stat(target.c_str(), &status) == 0;
  Sibling sibling(target);
  if (!sibling.replace(target, text, exists ? status.st_mode & 07777 : 0644))
    return false;
  const auto folder =
      open_path(system_disk(), target.parent_path().string(), O_RDONLY | O_DIRECTORY);
  if (folder)
    ::fsync(folder.get());  // some file systems refuse this; the file itself is safe
  return true;
}

struct ValuePath {
  std::string root;
  std::string key;
  std::string name;  // empty for the key itself
};

// Nothing for a path without a root, or with an empty key name in it.
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

// A decimal number of 32 bits, signed or not.
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

// Keys that are asked for one after the other often stand beside each other.
const std::string& Registry::Hive::sections(const std::string& key) {
  const auto above = lowercase(key.substr(0, key.rfind('\\') + 1));
  const auto known = keys.find(above);
  if (known != keys.end())
    return known->second;
  return keys[above] = read_keys(file, key);
}

bool Registry::Hive::change(const Edit& edit) {
  std::error_code ignored;
  const bool missing = fs::symlink_status(file, ignored).type() == fs::file_type::not_found;
  const auto old = missing ? std::string() : read_file(file);
  if (!old)
    return false;
  const auto changed = edit(*old);
  if (!changed || !replace_file(file, *changed))
    return false;
  keys.clear();
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
  Hive* const hive = path ? find_hive(path->root) : nullptr;
  if (!hive)
    return std::nullopt;
  return find_value(hive->sections(path->key), path->key, path->name);
}

bool Registry::write(const std::string& value_path, const std::string& data,
                     const std::string& type) {
  const auto path = parse_value_path(value_path);
  const auto value = make_value(data, type);
  Hive* const hive = path ? find_hive(path->root) : nullptr;
  if (!hive || !value)
    return false;
  return hive->change([&](std::string_view text) {
    return std::optional(with_value(text, path->key, path->name, *value));
  });
}

bool Registry::remove(const std::string& value_path) {
  const auto path = parse_value_path(value_path);
  Hive* const hive = path ? find_hive(path->root) : nullptr;
  if (!hive || (path->key.empty() && path->name.empty()))
    return false;
  return hive->change([&](std::string_view text) {
    auto changed = path->name.empty() ? without_key(text, path->key)
                                      : without_value(text, path->key, path->name);
    return changed == text ? std::nullopt : std::optional(std::move(changed));
  });
}
