// A file that is written beside the one whose name it will take.
#include "platform/prefix/temporaryfile.h"

#include <cerrno>
#include <cstdio>
#include <random>

#include <fcntl.h>
#include <unistd.h>

namespace {

// Hidden, and too unlike a map's name for any search to find it.
std::string temporaryname() {
  static std::random_device random;
  return ".vora-map-updater-" + std::to_string(random()) + ".tmp";
}

constexpr int attempts = 100;

// Gives the file the permissions and owner of another one. Only root may give files away, and that
// a file system knows no permissions is no reason to stop.
void makelike(const Handle& file, const struct stat& like) {
  struct stat own;
  if (::fstat(file.get(), &own) == 0 && (own.st_uid != like.st_uid || own.st_gid != like.st_gid))
    static_cast<void>(::fchown(file.get(), like.st_uid, like.st_gid) == 0);
  ::fchmod(file.get(), like.st_mode & 07777);
}

}  // namespace

TemporaryFile::~TemporaryFile() {
  if (!name.empty())
    ::unlinkat(folder->get(), name.c_str(), 0);
}

bool TemporaryFile::write(std::string_view text, const struct stat& like) {
  Handle file;
  for (int attempt = 0; !file && attempt < attempts; ++attempt) {
    std::string free = temporaryname();
    file = opennameat(*folder, free, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
    if (!file && errno != EEXIST)
      return false;
    if (file)
      name = std::move(free);
  }
  if (!file || !writeall(file, text))
    return false;
  makelike(file, like);
  return ::fsync(file.get()) == 0 && file.close();
}

bool TemporaryFile::take(const std::string& newname) {
  if (::renameat(folder->get(), name.c_str(), folder->get(), newname.c_str()) != 0)
    return false;
  name.clear();
  return true;
}

bool TemporaryFile::takefree(const std::string& newname) {
  if (!renamefree(*folder, name, newname))
    return false;
  name.clear();
  return true;
}

bool renamefree(const Handle& folder, const std::string& from, const std::string& to) {
  const int at = folder.get();
  if (::renameat2(at, from.c_str(), at, to.c_str(), RENAME_NOREPLACE) == 0)
    return true;
  if (errno != EINVAL && errno != ENOSYS)
    return false;
  // The file system knows no such renaming.
  struct stat taken;
  if (::fstatat(at, to.c_str(), &taken, AT_SYMLINK_NOFOLLOW) == 0) {
    errno = EEXIST;
    return false;
  }
  return ::renameat(at, from.c_str(), at, to.c_str()) == 0;
}
