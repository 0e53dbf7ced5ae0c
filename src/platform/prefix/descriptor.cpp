// File descriptors that close themselves, and basic operations on them.
#include "platform/prefix/descriptor.h"

#include <cerrno>
#include <climits>
#include <new>
#include <system_error>

#include <fcntl.h>

Descriptor::~Descriptor() { static_cast<void>(close()); }

bool Descriptor::close() {
  const int closing = std::exchange(descriptor, -1);
  return closing < 0 || owner->close(closing) == 0;
}

// A path longer than PATH_MAX is walked in pieces, each relative to the one before.
Descriptor open_path(Disk& disk, const std::string& path, int flags, unsigned mode) {
  Descriptor folder;
  std::string_view rest = path;
  int base = AT_FDCWD;
  while (rest.size() >= PATH_MAX) {
    const auto slash = rest.rfind('/', PATH_MAX - 2);
    if (slash == std::string_view::npos || slash == 0)
      break;
    const std::string piece(rest.substr(0, slash));
    folder =
        Descriptor(disk, uninterrupted([&] {
                     return disk.open(base, piece.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC, 0);
                   }));
    if (!folder)
      return folder;
    base = folder.get();
    rest.remove_prefix(rest.find_first_not_of('/', slash));
  }
  const std::string last(rest);
  return Descriptor(
      disk, uninterrupted([&] { return disk.open(base, last.c_str(), flags | O_CLOEXEC, mode); }));
}

Descriptor open_at(const Descriptor& folder, const std::string& name, int flags, unsigned mode) {
  Disk& disk = folder.disk();
  return Descriptor(disk, uninterrupted([&] {
                      return disk.open(folder.get(), name.c_str(), flags | O_CLOEXEC, mode);
                    }));
}

bool write_all(const Descriptor& file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written =
        uninterrupted([&] { return file.disk().write(file.get(), text.data(), text.size()); });
    if (written == 0)
      errno = EIO;
    if (written <= 0)
      return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

std::optional<std::size_t> read_all(const Descriptor& file, char* buffer, std::size_t size,
                                    std::size_t from) {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t length = uninterrupted([&] {
      return file.disk().read(file.get(), buffer + done, size - done,
                              static_cast<off_t>(from + done));
    });
    if (length < 0)
      return std::nullopt;
    if (length == 0)
      break;
    done += static_cast<std::size_t>(length);
  }
  return done;
}

std::optional<std::string> read_regular_file(const std::string& path, std::size_t most) {
  const auto file = open_path(system_disk(), path, O_RDONLY | O_NONBLOCK);
  struct stat status{};
  if (!file || !describe(file, status) || !S_ISREG(status.st_mode) ||
      static_cast<std::size_t>(status.st_size) > most)
    return std::nullopt;
  std::string text(static_cast<std::size_t>(status.st_size), '\0');
  const auto length = read_all(file, text.data(), text.size());
  if (!length)
    return std::nullopt;
  text.resize(*length);
  return text;
}

bool describe(const Descriptor& file, struct stat& status) {
  return uninterrupted([&] { return file.disk().status(file.get(), "", AT_EMPTY_PATH, status); }) ==
         0;
}

bool stat_at(const Descriptor& folder, const std::string& name, struct stat& status) {
  return uninterrupted([&] {
           return folder.disk().status(folder.get(), name.c_str(), AT_SYMLINK_NOFOLLOW, status);
         }) == 0;
}

void throw_if_out_of_memory(int error) {
  if (error == ENOMEM)
    throw std::bad_alloc();
}

std::string system_reason() { return std::generic_category().message(errno); }
