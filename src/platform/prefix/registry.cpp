// The two registry files of a Wine prefix: splits value paths, and changes the files.
#include "platform/prefix/registry.h"

#include "platform/letter_case.h"
#include "platform/prefix/prefix_files.h"
#include "platform/replacing.h"

#include <string_view>
#include <utility>

namespace fs = std::filesystem;

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
  if (missing)
    return false;
  PrefixFiles files{Machine{real.parent_path().string(), "", ""}};
  const std::string path = Paths::unix_namespace + real.string();
  static_cast<void>(files.list(path.substr(0, path.rfind('/')), "*"));  // removes stale temporaries
  auto opened = files.open_map(path);
  const auto changed = opened ? edit((*opened)->text) : std::nullopt;
  if (!changed)
    return false;
  text.reset();
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
  constexpr std::string_view current_set = "CurrentControlSet", first_set = "ControlSet001";
  const auto place = find_place(value_path);
  auto value = place ? find_value(place->hive.read(), place->key, place->name) : std::nullopt;
  const auto at = value_path.find(current_set);
  if (value || at == std::string::npos)
    return value;
  return read(std::string(value_path).replace(at, current_set.size(), first_set));
}

bool Registry::is_32_bit() {
  return local_machine.read().find("\n#arch=win32") != std::string::npos;
}

bool Registry::write(const std::string& value_path, const std::string& data,
                     const std::string& type) {
  const auto place = find_place(value_path);
  return place && place->hive.change([&](std::string_view text) {
    return with_value(text, place->key, place->name, data, type);
  });
}

bool Registry::remove(const std::string& value_path) {
  const auto place = find_place(value_path);
  return place && !(place->key.empty() && place->name.empty()) &&
         place->hive.change(
             [&](std::string_view text) { return without(text, place->key, place->name); });
}
