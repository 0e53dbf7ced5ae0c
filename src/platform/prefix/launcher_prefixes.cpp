// Where game launchers keep Wine prefixes: the table, and what its rows mean. The files of
// launchers are untrusted: what is malformed or too large is skipped.
#include "platform/prefix/launcher_prefixes.h"

#include "platform/path_rules.h"
#include "platform/prefix/descriptor.h"
#include "platform/prefix/folder_names.h"
#include "platform/prefix/prefix_check.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

using Texts = std::vector<std::string>;

Texts vdf_paths(std::string_view text);
Texts yaml_prefixes(std::string_view text);
Texts json_prefixes(std::string_view text);

// All places are below the user's home. "*" stands for every name of that ending.

constexpr const char* steam_libraries[] = {
    ".steam/steam",
    ".local/share/Steam",
    ".var/app/com.valvesoftware.Steam/.local/share/Steam",
    "snap/steam/common/.local/share/Steam",
};

// Below a Steam library: its prefixes, and the file that names more libraries.
constexpr char steam_prefixes[] = "steamapps/compatdata/*/pfx";
constexpr char steam_library_list[] = "steamapps/libraryfolders.vdf";

constexpr const char* prefix_folders[] = {
    "Games/*",  // Lutris
    ".local/share/bottles/bottles/*",
    ".var/app/com.usebottles.bottles/data/bottles/bottles/*",
    "Games/Heroic/Prefixes/*",
    "Games/Heroic/Prefixes/*/pfx",
    "Games/Heroic/Prefixes/default/*",
    "Games/Heroic/Prefixes/default/*/pfx",
    ".local/share/wineprefixes/*",  // winetricks
    ".PlayOnLinux/wineprefix/*",
    ".cxoffice/*",  // CrossOver
    "Games/umu/*",
};

// Files that name prefixes.
constexpr struct {
  const char* files;
  Texts (*named)(std::string_view text);
} prefix_lists[] = {
    {".local/share/lutris/games/*.yml", yaml_prefixes},
    {".config/lutris/games/*.yml", yaml_prefixes},
    {".var/app/net.lutris.Lutris/data/lutris/games/*.yml", yaml_prefixes},
    {".var/app/net.lutris.Lutris/config/lutris/games/*.yml", yaml_prefixes},
    {".config/heroic/GamesConfig/*.json", json_prefixes},
    {".var/app/com.heroicgameslauncher.hgl/config/heroic/GamesConfig/*.json", json_prefixes},
};

constexpr std::size_t max_list_size = 1 << 20;  // of a launcher's file, in bytes
constexpr std::size_t max_named = 100;          // paths taken from one file
constexpr std::size_t max_entries = 10'000;     // names taken from one folder

std::string_view take_line(std::string_view& text) {
  const auto end = std::min(text.find('\n'), text.size());
  const auto line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return line;
}

std::string_view trim(std::string_view text) {
  constexpr std::string_view blanks = " \t\r";
  text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
  return text.substr(0, text.find_last_not_of(blanks) + 1);
}

// Takes a text in double quotes off the front; a backslash stands before a quote or a backslash.
std::string take_quoted(std::string_view& text) {
  std::string taken;
  text = trim(text);
  if (!text.starts_with('"'))
    return taken;
  std::size_t at = 1;
  for (; at < text.size() && text[at] != '"'; ++at) {
    if (text[at] == '\\' && at + 1 < text.size())
      ++at;
    taken += text[at];
  }
  text.remove_prefix(std::min(at + 1, text.size()));
  return taken;
}

// Not a parser of Steam's format: scans for lines that set "path", one setting a line, as Steam
// writes them.
Texts vdf_paths(std::string_view text) {
  Texts paths;
  while (!text.empty()) {
    auto line = take_line(text);
    if (take_quoted(line) == "path")
      paths.push_back(take_quoted(line));
  }
  return paths;
}

// Not a parser of YAML: scans for lines "prefix: value", plain or in quotes, as Lutris writes them.
Texts yaml_prefixes(std::string_view text) {
  constexpr std::string_view key = "prefix:";
  Texts prefixes;
  while (!text.empty()) {
    auto line = trim(take_line(text));
    if (!line.starts_with(key))
      continue;
    line = trim(line.substr(key.size()));
    const bool quoted = line.size() > 1 && line.front() == line.back() &&
                        (line.front() == '"' || line.front() == '\'');
    prefixes.emplace_back(quoted ? line.substr(1, line.size() - 2) : line);
  }
  return prefixes;
}

// The "winePrefix" of each game in a file of Heroic.
Texts json_prefixes(std::string_view text) {
  Texts prefixes;
  const auto games = nlohmann::json::parse(text, nullptr, false);
  if (!games.is_object())
    return prefixes;
  for (const auto& game : games) {
    const auto prefix = game.is_object() ? game.find("winePrefix") : game.end();
    if (prefix != game.end() && prefix->is_string())
      prefixes.push_back(prefix->get<std::string>());
  }
  return prefixes;
}

// The names in a folder that match `pattern`; "*" matches no hidden ones.
Texts names_in(const fs::path& folder, std::string_view pattern) {
  Texts names;
  const auto visit = [&](std::string_view name, unsigned char) {
    if (names.size() < max_entries && !name.starts_with('.') && matches_pattern(name, pattern))
      names.emplace_back(name);
  };
  for_each_name(open_path(system_disk(), folder.string(), O_RDONLY | O_DIRECTORY), visit);
  return names;
}

// The paths that `pattern` stands for below `base`. They need not exist.
std::vector<fs::path> expand(const fs::path& base, std::string_view pattern) {
  std::vector<fs::path> paths{base};
  for (const auto& part : split_names(pattern, "/")) {
    std::vector<fs::path> longer;
    for (const auto& path : paths)
      for (const auto& name : part.starts_with('*') ? names_in(path, part) : Texts{part})
        longer.push_back(path / name);
    paths = std::move(longer);
  }
  return paths;
}

// The absolute paths that a launcher's file names; "~" stands for the user's home.
std::vector<fs::path> named_in(const fs::path& file, Texts (*named)(std::string_view text),
                               const std::string& home) {
  const auto text = read_regular_file(file.string(), max_list_size);
  const auto names = text ? named(*text) : Texts();
  std::set<fs::path> known;
  std::vector<fs::path> paths;
  for (const auto& name : names) {
    const std::string path = name.starts_with("~/") ? home + name.substr(1) : name;
    const auto spelled = (fs::path(path).lexically_normal() / "").parent_path();  // in one way
    if (path.starts_with('/') && path.find('\0') == std::string::npos && paths.size() < max_named &&
        known.insert(spelled).second)
      paths.emplace_back(path);
  }
  return paths;
}

void add(std::vector<fs::path>& paths, const std::vector<fs::path>& more) {
  paths.insert(paths.end(), more.begin(), more.end());
}

// All paths where a launcher's prefix may be.
std::vector<fs::path> candidates(const std::string& home) {
  std::vector<fs::path> found;
  for (const char* const place : steam_libraries) {
    const auto library = fs::path(home) / place;
    add(found, expand(library, steam_prefixes));
    for (const auto& other : named_in(library / steam_library_list, vdf_paths, home))
      add(found, expand(other, steam_prefixes));
  }
  for (const char* const place : prefix_folders)
    add(found, expand(home, place));
  for (const auto& list : prefix_lists)
    for (const auto& file : expand(home, list.files))
      for (const auto& prefix : named_in(file, list.named, home))
        add(found, {prefix, prefix / "pfx"});  // a launcher with Proton names the folder above
  return found;
}

// When a prefix was last used, in seconds and nanoseconds.
std::pair<std::time_t, long> last_use(const fs::path& prefix) {
  struct stat status{};
  if (::stat((prefix / "user.reg").c_str(), &status) != 0)
    return {};
  return {status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

}  // namespace

std::vector<std::string> launcher_prefixes(const std::string& home) {
  std::set<std::pair<dev_t, ino_t>> known;
  std::vector<std::pair<std::pair<std::time_t, long>, std::string>> by_use;
  for (const auto& path : candidates(home)) {
    struct stat status{};
    if (is_prefix(path) && ::stat(path.c_str(), &status) == 0 &&
        known.emplace(status.st_dev, status.st_ino).second)
      by_use.emplace_back(last_use(path), path.string());
  }
  std::sort(by_use.rbegin(), by_use.rend());
  std::vector<std::string> prefixes;
  prefixes.reserve(by_use.size());
  for (auto& [use, prefix] : by_use)
    prefixes.push_back(std::move(prefix));
  return prefixes;
}
