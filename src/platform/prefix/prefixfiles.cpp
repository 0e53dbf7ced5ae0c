// The files of a Windows machine that is kept in a folder.
#include "platform/prefix/prefixfiles.h"

#include "platform/names.h"
#include "platform/prefix/lettercase.h"
#include "platform/prefix/prefixmapfolder.h"
#include "platform/replacing.h"

#include <algorithm>
#include <cerrno>
#include <optional>

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>

namespace {

Failure failure(const std::string& path, const char* action) {
  return {path, action, systemreason(), errno == ENOENT};
}

bool ishidden(std::string_view name) { return name.starts_with('.'); }

// File systems that are the kernel's own: they hold no maps, and walking them never ends well.
bool iskernels(const Handle& folder) {
  struct statfs status;
  if (::fstatfs(folder.get(), &status) != 0)
    return false;
  constexpr unsigned long kinds[] = {
      PROC_SUPER_MAGIC, SYSFS_MAGIC,      CGROUP_SUPER_MAGIC, CGROUP2_SUPER_MAGIC, DEBUGFS_MAGIC,
      TRACEFS_MAGIC,    SECURITYFS_MAGIC, DEVPTS_SUPER_MAGIC, BPF_FS_MAGIC,        PSTOREFS_MAGIC,
      SELINUX_MAGIC,    EFIVARFS_MAGIC,   BINFMTFS_MAGIC,     AUTOFS_SUPER_MAGIC,  NSFS_MAGIC,
  };
  return std::find(std::begin(kinds), std::end(kinds), static_cast<unsigned long>(status.f_type)) !=
         std::end(kinds);
}

// Whether a name in an open folder is a folder (true) or an ordinary file; nothing for any other
// kind. A link counts as what it leads to.
std::optional<bool> isfolder(const Handle& folder, const char* name) {
  struct stat status;
  if (!folder || folder.disk().status(folder.get(), name, 0, status) != 0)
    return std::nullopt;
  if (S_ISDIR(status.st_mode))
    return true;
  return S_ISREG(status.st_mode) ? std::optional(false) : std::nullopt;
}

// An entry for a name as readdir gave it; nothing when the name does not belong in a list.
std::optional<Entry> entryof(const Handle& folder, const char* name, unsigned char type,
                             std::string_view pattern) {
  if (ishidden(name) || (type == DT_REG && !matchespattern(name, pattern)) || !allowedname(name))
    return std::nullopt;
  if (type == DT_DIR || type == DT_REG)
    return Entry{name, type == DT_DIR, false};
  if (type != DT_LNK && type != DT_UNKNOWN)
    return std::nullopt;
  const auto kind = isfolder(folder, name);
  if (!kind || (!*kind && !matchespattern(name, pattern)))
    return std::nullopt;
  struct stat status;
  const bool known = lookat(folder, name, status);
  return Entry{name, *kind, !known || S_ISLNK(status.st_mode)};
}

class PrefixMap : public OpenMap {
public:
  // `known` must outlive the object.
  PrefixMap(std::string content, std::string itsfolder, MapFile file, FolderNames& known)
      : OpenMap(std::move(content)), folder(std::move(itsfolder)), map(std::move(file)),
        names(known) {}

  Result<Done> replace(const Replacement& replacement) override {
    const Handle open = openpath(map.handle.disk(), folder + "/", O_RDONLY | O_DIRECTORY);
    if (!open)
      return failure(replacement.map, "open its folder");
    names.refresh(open);
    PrefixMapFolder mapfolder(open, names, map);
    auto done = Replacing(mapfolder, replacement).run();
    names.changed(open);
    return done;
  }

private:
  const std::string folder;  // its POSIX path
  const MapFile map;
  FolderNames& names;
};

}  // namespace

Result<PrefixFiles::Opened> PrefixFiles::open(const std::string& path, int flags,
                                              const char* action) const {
  if (auto exact = paths.exact(path))
    if (Handle handle = openpath(disk, exact->path(), flags))
      return Opened{std::move(handle), *std::move(exact)};
  auto location = paths.find(path);
  if (!location)
    return location.failure();
  Handle handle = openpath(disk, location->path(), flags);
  if (!handle)
    return failure(path, action);
  return Opened{std::move(handle), *std::move(location)};
}

Result<PrefixFiles::Opened> PrefixFiles::openfolder(const std::string& folder) const {
  return open(folder, O_RDONLY | O_DIRECTORY, "open the folder");
}

Result<Done> PrefixFiles::writetext(const std::string& path, std::string_view text,
                                    int flags) const {
  const auto location = paths.find(path);
  if (!location)
    return location.failure();
  Handle file =
      openpath(disk, location->path(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | flags, 0666);
  if (!file || !writeall(file, text) || !file.close())
    return failure(path, "write it");
  return Done{};
}

Result<std::string> PrefixFiles::lookup(const std::string& path, Match match) {
  const bool folders = match == Match::filesandfolders;
  const bool inside = path.ends_with('\\');
  if (folders && (inside || path.ends_with("\\.")))
    return fullpath(path) ? std::string(".") : std::string();
  if (inside)
    return firstlisted(path);
  const auto location = paths.find(path);
  if (!location && !location.failure().missing)
    return location.failure();
  if (!location || !location->exists || ishidden(location->name) || path.ends_with("\\."))
    return std::string();
  errno = 0;
  const Handle folder = openpath(disk, location->folder + "/", O_PATH | O_DIRECTORY);
  const auto kind = isfolder(folder, location->name.c_str());
  if (!kind && errno != 0 && errno != ENOENT)
    return failure(path, "find it");
  return kind && (folders || !*kind) ? location->name : std::string();
}

Result<std::vector<Entry>> PrefixFiles::list(const std::string& folder, std::string_view pattern) {
  const auto opened = openfolder(folder);
  if (!opened)
    return opened.failure();
  const Handle& handle = opened->handle;
  if (iskernels(handle))
    return Failure{folder, "list the folder", "it is the system's own"};
  std::vector<Entry> entries;
  std::vector<std::string> leftover;
  const bool complete = eachname(handle, [&](const char* name, unsigned char type) {
    if (MapFolder::istemporary(name))
      leftover.emplace_back(name);
    if (auto entry = entryof(handle, name, type, pattern))
      entries.push_back(*std::move(entry));
  });
  if (!complete)
    return failure(folder, "list the folder");
  for (const std::string& name : leftover)
    clearleftover(handle, name);
  sortentries(entries, lowercase);
  return entries;
}

Result<std::string> PrefixFiles::fullpath(const std::string& folder) {
  const auto opened = openfolder(folder);
  if (!opened)
    return opened.failure();
  return paths.windowspath(opened->location.path(), folder[0]);
}

Result<PrefixFiles::Content> PrefixFiles::content(const std::string& path) {
  const Failure missing{path, "read it", "the file is missing", true};
  auto opened = open(path, O_RDONLY | O_NONBLOCK, "read it");
  if (!opened) {
    const auto name = lookup(path, Match::files);
    return name && name->empty() ? missing : opened.failure();
  }
  struct stat status;
  if (!describe(opened->handle, status))
    return failure(path, "read it");
  if (!S_ISREG(status.st_mode) || ishidden(opened->location.name) || path.ends_with("\\.") ||
      path.ends_with('\\'))
    return missing;
  if (status.st_size > largestfile)
    return Failure{path, "read it", "it is larger than 1 GiB"};
  const auto stamp = PrefixMapFolder::stamp(status);
  std::string text(static_cast<std::size_t>(status.st_size), '\0');
  const auto length = readall(opened->handle, text.data(), text.size());
  if (!length)
    return failure(path, "read it");
  text.resize(*length);
  return Content{*std::move(opened), status, stamp, std::move(text)};
}

Result<std::string> PrefixFiles::read(const std::string& path) {
  auto read = content(path);
  if (!read)
    return read.failure();
  return std::move(read->text);
}

Result<std::unique_ptr<OpenMap>> PrefixFiles::openmap(const std::string& path) {
  auto read = content(path);
  if (!read)
    return read.failure();
  auto& [handle, location] = read->opened;
  MapFile map{std::move(location.name), std::move(handle), read->status, read->stamp};
  return {std::make_unique<PrefixMap>(std::move(read->text), std::move(location.folder),
                                      std::move(map), names)};
}

Result<Done> PrefixFiles::write(const std::string& path, std::string_view text) {
  return writetext(path, text, O_TRUNC);
}

Result<Done> PrefixFiles::append(const std::string& path, std::string_view text) {
  return writetext(path, text, O_APPEND);
}
