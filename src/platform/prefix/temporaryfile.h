// A file that is written beside the one whose name it will take.
#pragma once

#include "platform/prefix/handle.h"

#include <string>
#include <string_view>

#include <sys/stat.h>

// A hidden file in an open folder, which must outlive it. Unless it takes a name it is removed.
class TemporaryFile {
public:
  explicit TemporaryFile(const Handle& open) : folder(&open) {}
  TemporaryFile(TemporaryFile&& other) noexcept
      : folder(other.folder), name(std::exchange(other.name, {})) {}
  TemporaryFile& operator=(TemporaryFile&&) = delete;
  ~TemporaryFile();

  // Writes the whole content and flushes it to the disk; the file gets the permissions and, where
  // the system lets us, the owner of `like`. False, with errno set, on failure.
  bool write(std::string_view text, const struct stat& like);

  // Takes a name; what had it is gone. False, with errno set, on failure.
  bool take(const std::string& newname);

  // Takes a name that must be free: EEXIST when it is not.
  bool takefree(const std::string& newname);

private:
  const Handle* folder;
  std::string name;  // empty when there is no file
};

// Gives an entry another name, which must be free: EEXIST when it is not. False, with errno set, on
// failure.
bool renamefree(const Handle& folder, const std::string& from, const std::string& to);
