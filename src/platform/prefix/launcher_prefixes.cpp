// Where game launchers keep Wine prefixes: the tables, and what their rows mean. The files of
// launchers are untrusted: what is malformed or too large is skipped.
#include "platform/prefix/launcher_prefixes.h"

#include "platform/prefix/descriptor.h"
#include "platform/prefix/machine.h"

#include <algorithm>
#include <climits>
#include <filesystem>
#include <set>
#include <string_view>
#include <utility>

#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

// All places are below the user's home.

constexpr const char* steam_libraries[] = {
    ".steam/steam",
    ".local/share/Steam",
    ".var/app/com.valvesoftware.Steam/.local/share/Steam",
    "snap/steam/common/.local/share/Steam",
};

// Below a Steam library: the folder of its prefixes, and the file that names more libraries.
constexpr char steam_prefixes[] = "steamapps/compatdata";
constexpr char steam_library_list[] = "steamapps/libraryfolders.vdf";

// Folders of prefixes.
constexpr const char* prefix_folders[] = {
    "Games",  // Lutris
    ".local/share/bottles/bottles",
    ".var/app/com.usebottles.bottles/data/bottles/bottles",
    "Games/Heroic/Prefixes",
    "Games/Heroic/Prefixes/default",
    ".local/share/wineprefixes",  // winetricks
    ".PlayOnLinux/wineprefix",
    ".cxoffice",  // CrossOver
    "Games/umu",
};

// Folders of files that name prefixes, and the key that comes before one.
constexpr struct {
  const char* folder;
  const char* key;
} prefix_lists[] = {
    {".local/share/lutris/games", "prefix:"},
    {".config/lutris/games", "prefix:"},
    {".var/app/net.lutris.Lutris/data/lutris/games", "prefix:"},
    {".var/app/net.lutris.Lutris/config/lutris/games", "prefix:"},
    {".config/heroic/GamesConfig", "\"winePrefix\""},
    {".var/app/com.heroicgameslauncher.hgl/config/heroic/GamesConfig", "\"winePrefix\""},
};

constexpr std::size_t max_list_size = 1 << 20;  // of a launcher's file, in bytes
constexpr std::size_t max_named = 100;          // paths taken from one file
constexpr std::size_t max_entries = 10'000;     // names taken from one folder

using Folders = std::vector<fs::path>;

void add(Folders& folders, const Folders& more) {
  folders.insert(folders.end(), more.begin(), more.end());
}

// The paths of what is in a folder, without hidden names.
Folders entries_of(const fs::path& folder) {
  Folders entries;
  std::error_code unreadable;
  for (fs::directory_iterator entry(folder, unreadable), end;
       entry != end && entries.size() < max_entries; entry.increment(unreadable))
    if (!entry->path().filename().string().starts_with('.'))
      entries.push_back(entry->path());
  return entries;
}

// The value that `text` begins with, in quotes or up to the line's end.
std::string_view first_value(std::string_view text) {
  if (text.starts_with('"') || text.starts_with('\''))
    return text.substr(1, text.find(text[0], 1) - 1);
  const auto line = text.substr(0, text.find('\n'));
  return line.substr(0, line.find_last_not_of(" \t\r") + 1);
}

// The absolute paths that a launcher's file names, each once; "~" stands for the user's home. Not a
// parser of VDF, YAML or JSON: looks for the key, as the launchers write it in each. A path with a
// quote or a backslash in it is missed.
Folders named_in(const fs::path& file, std::string_view key, const std::string& home) {
  const auto content = read_regular_file(file.string(), max_list_size);
  const std::string text = content ? content->c_str() : "";
  std::set<fs::path> known;  // each path in one spelling
  Folders paths;
  for (auto at = text.find(key); at != text.npos && paths.size() < max_named;
       at = text.find(key, at)) {
    at = std::min(text.find_first_not_of(": \t", at + key.size()), text.size());
    std::string path(first_value(std::string_view(text).substr(at, PATH_MAX + 2)));
    if (path.starts_with("~/"))
      path.replace(0, 1, home);
    if (path.starts_with('/') && path.size() < PATH_MAX &&
        known.insert((fs::path(path) / "").lexically_normal()).second)
      paths.emplace_back(path);
  }
  return paths;
}

// All folders that may be a launcher's prefix or, as those of Proton, have one named "pfx".
Folders candidates(const fs::path& home) {
  Folders found;
  for (const char* const place : steam_libraries) {
    const auto library = home / place;
    add(found, entries_of(library / steam_prefixes));
    for (const auto& other : named_in(library / steam_library_list, "\"path\"", home.string()))
      add(found, entries_of(other / steam_prefixes));
  }
  for (const char* const place : prefix_folders)
    add(found, entries_of(home / place));
  for (const auto& [place, key] : prefix_lists)
    for (const auto& file : entries_of(home / place))
      add(found, named_in(file, key, home.string()));
  return found;
}

}  // namespace

std::vector<std::string> launcher_prefixes(const std::string& home) {
  std::set<std::pair<dev_t, ino_t>> known;
  std::vector<std::pair<fs::file_time_type, std::string>> by_use;
  std::error_code missing;
  for (const auto& folder : candidates(home))
    for (const auto& prefix : {folder, folder / "pfx"})
      if (struct stat status{}; is_prefix(prefix) && ::stat(prefix.c_str(), &status) == 0 &&
                                known.emplace(status.st_dev, status.st_ino).second)
        by_use.emplace_back(fs::last_write_time(prefix / "user.reg", missing), prefix.string());
  std::ranges::sort(by_use, std::greater());
  std::vector<std::string> prefixes;
  prefixes.reserve(by_use.size());
  for (auto& [use, prefix] : by_use)
    prefixes.push_back(std::move(prefix));
  return prefixes;
}
