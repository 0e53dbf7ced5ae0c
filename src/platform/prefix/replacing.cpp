// Puts a converted map in the place of the old one, so that no instant is without the map.
#include "platform/prefix/replacing.h"

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int firstnumber = 2;  // of the backups that were moved aside

// Whether an open file holds just `text`.
bool holds(const Handle& file, std::string_view text) {
  char buffer[1 << 16];
  while (true) {
    const auto length = readall(file, buffer, sizeof buffer);
    if (!length || !text.starts_with(std::string_view(buffer, *length)))
      return false;
    text.remove_prefix(*length);
    if (*length < sizeof buffer)
      return text.empty();
  }
}

// A link to a file of that kind is made in another way.
bool nohardlinks(int error) {
  return error == EPERM || error == EOPNOTSUPP || error == ENOSYS || error == EMLINK;
}

std::string nameof(const std::string& path) { return path.substr(path.rfind('\\') + 1); }

}  // namespace

Failure Replacing::failure(const std::string& action) const {
  return {replacement.map, action, systemreason()};
}

Result<Done> Replacing::run() {
  if (auto checked = checkmap(); !checked)
    return checked;
  if (auto free = checkcompanions(); !free)
    return free;
  if (auto ready = prepare(); !ready)
    return ready;
  return commit();
}

// The map must be an ordinary file that holds what was converted.
Result<Done> Replacing::checkmap() {
  const Handle file = opennameat(folder, mapname, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
  if (!file || ::fstat(file.get(), &mapstatus) != 0)
    return failure("convert it");
  if (!S_ISREG(mapstatus.st_mode) || !holds(file, replacement.was))
    return Failure{replacement.map, "convert it", "it has changed since it was read"};
  return Done{};
}

// The name on the disk of a companion, which may be spelled in another letter case there.
std::string Replacing::spelled(const std::string& path) {
  const std::string name = nameof(path);
  const std::string found = names.find(folder, name);
  return found.empty() ? name : found;
}

Result<Done> Replacing::checkcompanions() {
  std::vector<std::string> paths{replacement.backup};
  for (const NewFile& file : replacement.files)
    paths.push_back(file.path);
  for (const std::string& path : paths) {
    struct stat status;
    if (!path.empty() && lookat(spelled(path), status) && S_ISDIR(status.st_mode))
      return Failure{replacement.map, "convert it", "a folder has the name " + nameof(path)};
  }
  return Done{};
}

bool Replacing::lookat(const std::string& name, struct stat& status) const {
  return ::fstatat(folder.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

Result<Done> Replacing::prepare() {
  for (const NewFile& file : replacement.files) {
    prepared.push_back({TemporaryFile(folder), spelled(file.path)});
    if (!prepared.back().file.write(file.text, mapstatus))
      return failure("write " + nameof(file.path));
  }
  return Done{};
}

Result<Done> Replacing::commit() {
  for (Prepared& next : prepared) {
    const bool ismap = !replacement.backup.empty() && &next == &prepared.back();
    if (ismap)
      if (auto kept = keepbackup(); !kept)
        return kept;
    if (!next.file.take(next.name))
      return failure("write " + next.name);
    names.added(next.name);
  }
  return Done{};
}

// Sees to it that the map has its backup name too.
Result<Done> Replacing::keepbackup() {
  const std::string name = spelled(replacement.backup);
  struct stat status;
  if (lookat(name, status)) {
    const auto isbackup = holdsmap(name, status);
    if (!isbackup)
      return isbackup.failure();
    if (*isbackup)
      return Done{};
    if (auto moved = moveaside(name); !moved)
      return moved;
  }
  return makebackup(nameof(replacement.backup));
}

// Whether a backup holds just what the map holds, flushed to the disk.
Result<bool> Replacing::holdsmap(const std::string& name, const struct stat& status) const {
  if (status.st_dev == mapstatus.st_dev && status.st_ino == mapstatus.st_ino)
    return true;
  if (!S_ISREG(status.st_mode) || status.st_size != mapstatus.st_size)
    return false;
  const Handle file = opennameat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
  if (!file)
    return failure("read " + name);
  if (!holds(file, replacement.was))
    return false;
  if (::fsync(file.get()) != 0)
    return failure("flush " + name);
  return true;
}

Result<Done> Replacing::moveaside(const std::string& name) {
  for (int number = firstnumber;; ++number) {
    const std::string free = name + std::to_string(number);
    if (!names.find(folder, free).empty())
      continue;
    names.added(free);
    if (renamefree(folder, name, free))
      return Done{};
    if (errno != EEXIST)
      return failure("move " + name + " aside");
  }
}

Result<Done> Replacing::makebackup(const std::string& name) {
  names.added(name);
  const int at = folder.get();
  if (::linkat(at, mapname.c_str(), at, name.c_str(), 0) == 0)
    return Done{};
  if (!nohardlinks(errno))
    return failure("make its backup " + name);
  TemporaryFile copy(folder);
  if (!copy.write(replacement.was, mapstatus) || !copy.takefree(name))
    return failure("make its backup " + name);
  return Done{};
}
