// File descriptors that close themselves, and basic operations on them.
#include "platform/prefix/descriptor.h"

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdint>
#include <ctime>
#include <new>
#include <system_error>
#include <thread>

#include <fcntl.h>

namespace {

constexpr std::time_t coarsest = 2;  // seconds between the time stamps of some file systems

// Opens a name. Another program may have a lease on the file, as a file server has for its clients:
// the first attempt asks it to give up the lease, and a later one succeeds.
Descriptor open_leased(Disk& disk, int folder, const char* name, int flags, unsigned mode) {
  std::chrono::milliseconds wait(1);
  constexpr std::chrono::milliseconds longest_wait(512);  // 1023 in all
  for (;; wait *= 2) {
    const int opened =
        uninterrupted([&] { return disk.open(folder, name, flags | O_CLOEXEC, mode); });
    if (opened >= 0 || errno != EWOULDBLOCK || wait > longest_wait)
      return Descriptor(disk, opened);
    std::this_thread::sleep_for(wait);
  }
}

}  // namespace

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
    folder = open_leased(disk, base, piece.c_str(), O_PATH | O_DIRECTORY, 0);
    if (!folder)
      return folder;
    base = folder.get();
    rest.remove_prefix(rest.find_first_not_of('/', slash));
  }
  return open_leased(disk, base, std::string(rest).c_str(), flags, mode);
}

Descriptor open_at(const Descriptor& folder, const std::string& name, int flags, unsigned mode) {
  return open_leased(folder.disk(), folder.get(), name.c_str(), flags, mode);
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

Result<std::string> read_regular_file(const std::string& path, std::size_t most) {
  const auto failure = [&](std::string reason) {
    return Failure{path, "read it", std::move(reason)};
  };
  const auto file = open_path(system_disk(), path, O_RDONLY | O_NONBLOCK);
  struct stat status{};
  if (!file || !stat_of(file, status)) {
    const bool missing = errno == ENOENT || errno == ENOTDIR;
    return Failure{path, "read it", system_reason(),
                   missing ? Failure::Kind::missing : Failure::Kind::other};
  }
  if (!S_ISREG(status.st_mode))
    return failure("it is not a regular file");
  if (static_cast<std::size_t>(status.st_size) > most)
    return failure("it is larger than " + std::to_string(most >> 20) + " MiB");
  std::string text(static_cast<std::size_t>(status.st_size), '\0');
  const auto length = read_all(file, text.data(), text.size());
  if (!length)
    return failure(system_reason());
  text.resize(*length);
  return text;
}

bool stat_of(const Descriptor& file, struct stat& status) {
  return uninterrupted([&] { return file.disk().status(file.get(), "", AT_EMPTY_PATH, status); }) ==
         0;
}

bool stat_at(const Descriptor& folder, const std::string& name, struct stat& status) {
  return uninterrupted([&] {
           return folder.disk().status(folder.get(), name.c_str(), AT_SYMLINK_NOFOLLOW, status);
         }) == 0;
}

OpenMap::FileState file_state(const struct stat& status) {
  const auto& time = status.st_mtim;
  return {status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size),
          static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000u +
              static_cast<std::uint64_t>(time.tv_nsec),
          time.tv_sec < std::time(nullptr) - coarsest};
}

void throw_if_out_of_memory(int error) {
  if (error == ENOMEM)
    throw std::bad_alloc();
}

std::string system_reason() { return std::generic_category().message(errno); }
