// A file system of a test's own, made in a file and mounted where this process alone sees it.
#include "tests/support/real_disk.h"

#include "platform/prefix/handle.h"

#include <cstdint>
#include <cstdlib>
#include <fstream>

#include <fcntl.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr std::uintmax_t imagesize = std::uintmax_t{320} << 20;  // some kinds want 300 MB

bool does(const std::string& command) {
  return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
}

Handle opened(const fs::path& folder) {
  return open_path(system_disk(), folder.string(), O_RDONLY | O_DIRECTORY);
}

}  // namespace

RealDisk::RealDisk(const std::string& kind, fs::path where)
    : folder(std::move(where)), image(folder.string() + ".disk") {
  fs::create_directories(folder);
  std::ofstream(image).close();
  fs::resize_file(image, imagesize);
  mounted = ::unshare(CLONE_NEWNS) == 0 &&
            ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
            does("mkfs." + kind + " '" + image.string() + "'") && mount();
}

RealDisk::~RealDisk() {
  if (mounted)
    ::umount2(folder.c_str(), MNT_DETACH);
  fs::remove(image);
}

bool RealDisk::mount() const {
  return does("mount -o loop '" + image.string() + "' '" + folder.string() + "'");
}

void RealDisk::flush() const { ::syncfs(opened(folder).get()); }

// The call is named after the kind that had it first; 2 is to lose what waits to be written.
bool RealDisk::cut_power() const {
  const std::uint32_t how = 2;
  return ::ioctl(opened(folder).get(), _IOR('X', 125, std::uint32_t), &how) == 0;
}

bool RealDisk::restart() const { return ::umount(folder.c_str()) == 0 && mount(); }
