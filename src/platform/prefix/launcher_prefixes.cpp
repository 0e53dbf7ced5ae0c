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
#include <utility>

#include <fcntl.h>

namespace fs = std::filesystem;

namespace {

using Texts = std::vector<std::string>;

// All places are below the user's home. "*" stands for every name of that ending.

constexpr const char* steam_libraries[] = {
    ".steam/steam",
    ".local/share/Steam",
    ".var/app/com.valvesoftware.Steam/.local/share/Steam",
    "snap/steam/common/.local/share/Steam",
};

// Below a Steam library: its prefixes, and the file that names more libraries behind a key.
constexpr char steam_prefixes[] = "steamapps/compatdata/*/pfx";
constexpr char steam_library_list[] = "steamapps/libraryfolders.vdf";
constexpr char steam_library_key[] = R"("path")";

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

// Files that name prefixes behind a key.
constexpr struct {
  const char *files, *key;
} prefix_lists[] = {
    {".local/share/lutris/games/*.yml", "prefix:"},
    {".config/lutris/games/*.yml", "prefix:"},
    {".var/app/net.lutris.Lutris/data/lutris/games/*.yml", "prefix:"},
    {".var/app/net.lutris.Lutris/config/lutris/games/*.yml", "prefix:"},
    {".config/heroic/GamesConfig/*.json", R"("winePrefix")"},
    {".var/app/com.heroicgameslauncher.hgl/config/heroic/GamesConfig/*.json", R"("winePrefix")"},
};

constexpr std::size_t max_list_size = 1 << 20;  // of a launcher's file, in bytes
constexpr std::size_t max_named = 100;          // paths taken from one file
constexpr std::size_t max_entries = 10'000;     // names taken from one folder

// Takes a value off the front of a text: what stands in quotes, in which a backslash comes before a
// quote or a backslash; else the rest of the line. Blanks and a colon may come first.
std::string take_value(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t:"), text.size()));
  const bool quoted = text.starts_with('"') || text.starts_with('\'');
  const char close = quoted ? text.front() : '\n';
  std::string value;
  std::size_t at = quoted ? 1 : 0;
  for (; at < text.size() && text[at] != close && text[at] != '\n'; ++at) {
    if (quoted && text[at] == '\\' && at + 1 < text.size())
      ++at;
    value += text[at];
  }
  text.remove_prefix(at);
  return quoted ? value : value.substr(0, value.find_last_not_of(" \t\r") + 1);
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

// The absolute paths to which a launcher's file sets a key; "~" stands for the user's home. Not a
// parser of any format: scans for the key, behind which every launcher writes its value on the same
// line. What is found by mistake is no Wine prefix with the game.
std::set<fs::path> named_in(const fs::path& file, std::string_view key, const std::string& home) {
  std::set<fs::path> paths;
  const auto text = read_regular_file(file.string(), max_list_size);
  std::string_view rest = text ? std::string_view(*text) : "";
  for (auto at = rest.find(key); at != rest.npos; at = rest.find(key)) {
    rest.remove_prefix(at + key.size());
    std::string path = take_value(rest);
    if (path.starts_with("~/"))
      path.replace(0, 1, home);
    if (path.starts_with('/') && path.find('\0') == path.npos && paths.size() < max_named)
      paths.insert((fs::path(path).lexically_normal() / "").parent_path());  // spelled in one way
  }
  return paths;
}

// All paths where a launcher's prefix may be.
std::vector<fs::path> candidates(const std::string& home) {
  std::vector<fs::path> found;
  const auto add = [&](const fs::path& base, std::string_view pattern) {
    const auto paths = expand(base, pattern);
    found.insert(found.end(), paths.begin(), paths.end());
  };
  for (const char* const place : steam_libraries) {
    const auto library = fs::path(home) / place;
    add(library, steam_prefixes);
    for (const auto& other : named_in(library / steam_library_list, steam_library_key, home))
      add(other, steam_prefixes);
  }
  for (const char* const place : prefix_folders)
    add(home, place);
  for (const auto& list : prefix_lists)
    for (const auto& file : expand(home, list.files))
      for (const auto& prefix : named_in(file, list.key, home)) {
        add(prefix, "");
        add(prefix, "pfx");  // a launcher with Proton names the folder above
      }
  return found;
}

}  // namespace

std::vector<std::string> launcher_prefixes(const std::string& home) {
  std::set<fs::path> known;
  std::vector<std::pair<fs::file_time_type, std::string>> by_use;
  for (const auto& path : candidates(home)) {
    std::error_code missing;
    if (is_prefix(path) && known.insert(fs::canonical(path, missing)).second)
      by_use.emplace_back(fs::last_write_time(path / "user.reg", missing), path.string());
  }
  std::sort(by_use.rbegin(), by_use.rend());
  std::vector<std::string> prefixes(by_use.size());
  std::ranges::transform(by_use, prefixes.begin(), [](auto& use) { return std::move(use.second); });
  return prefixes;
}
