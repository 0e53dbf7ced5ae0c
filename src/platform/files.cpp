// The rules of files that all machines share.
#include "platform/files.h"

#include <algorithm>

Result<std::string> Files::lookup(const std::string& path, Match match) {
  const bool folders = match == Match::files_and_folders;
  const bool inside = path.ends_with('\\');
  const bool own = path.ends_with("\\.");  // the "." among a folder's entries
  if (folders && (inside || own))
    return full_path(path) ? std::string(".") : std::string();
  if (own)
    return std::string();
  if (inside) {
    const auto entries = list(path, "*");
    if (!entries)
      return std::string();
    const auto file = std::find_if(entries->begin(), entries->end(),
                                   [](const Entry& entry) { return !entry.folder; });
    return file == entries->end() ? std::string() : file->name;
  }
  const auto found = find_entry(path);
  if (!found)
    return found.failure();
  return folders || !found->folder ? found->name : std::string();
}

Result<std::vector<Entry>> Files::list(const std::string& folder, std::string_view pattern) {
  auto listing = read_folder(folder, pattern);
  if (!listing)
    return listing.failure();
  for (const std::string& name : listing->temporaries)
    remove_stale_temporary(folder, name);
  return std::move(listing->entries);
}

Result<std::string> Files::read(const std::string& path) {
  auto map = open_map(path);
  if (!map)
    return map.failure();
  return std::move((*map)->text);
}

Result<std::unique_ptr<OpenMap>> Files::open_map(const std::string& path) {
  const Failure missing{path, "read it", "the file is missing", Failure::Kind::missing};
  if (path.ends_with('\\') || path.ends_with("\\."))
    return missing;
  auto opened = open_file(path);
  if (!opened) {
    const auto name = lookup(path, Match::files);
    return name && name->empty() ? missing : opened.failure();
  }
  auto& [map, content] = *opened;
  if (!map)
    return missing;
  if (content.size > max_file_size)
    return Failure{path, "read it", "it is larger than 1 GiB"};
  map->text.resize(content.size);
  const auto length = content.read(map->text.data(), map->text.size());
  if (!length)
    return Failure{path, "read it", map->last_error().reason};
  map->text.resize(*length);
  return std::move(map);
}

Result<Done> Files::write(const std::string& path, std::string_view text) {
  auto written = write_text(path, text, Writing::anew);
  if (written && !*written) {
    if (auto removed = remove_text(path); !removed)
      return removed;
    written = write_text(path, text, Writing::new_file);
  }
  return written ? Result<Done>(Done{}) : written.failure();
}

Result<Done> Files::append(const std::string& path, std::string_view text) {
  const auto written = write_text(path, text, Writing::at_end);
  if (!written)
    return written.failure();
  return *written ? Result<Done>(Done{}) : Failure{path, "write it", "it has another hard link"};
}
