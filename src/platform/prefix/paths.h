// Maps Windows paths to the POSIX paths of a Wine prefix, and back.
#pragma once

#include "platform/prefix/disk.h"
#include "platform/prefix/machine.h"
#include "platform/result.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

// The file or folder that a path names.
struct Location {
  std::string folder;  // POSIX path of the parent folder, without a final "/"
  std::string name;    // spelled as on the disk; empty for the root of a drive
  bool exists = true;  // whether there is an entry of that name, of any kind

  std::string path() const { return name.empty() ? folder + "/" : folder + "/" + name; }
};

class Paths {
public:
  // Before a POSIX path it makes a Windows path, as Wine writes one that is on no drive.
  static constexpr char unix_namespace[] = R"(\\?\unix\)";

  // `disk_in` must outlive the object.
  explicit Paths(const Machine& machine, Disk& disk_in = system_disk());

  // The location of a path whose names are all spelled as on the disk, which is not accessed. Fails
  // if there is no such drive, or if Windows would not allow one of the names.
  Result<Location> exact(const std::string& path) const;

  // Looks a path up case-insensitively. Fails if the drive or a parent folder does not exist, or if
  // Windows would not allow one of the names.
  Result<Location> find(const std::string& path) const;

  // The Windows path of a POSIX path, on the deepest drive that contains it. Of several such drives
  // `preferred` is taken if it is one of them, else the first. A path on no drive is written after
  // `unix_namespace`.
  std::string windows_path(const std::string& path, char preferred = 0) const;

  // The drive letters in order, each with its colon.
  std::vector<std::string> drives() const;

private:
  struct Parsed {
    std::string root;                     // POSIX path, without a final "/"
    std::vector<std::string> components;  // includes the current folder's for a relative path
  };

  static Location unchecked_location(const Parsed& parsed);
  Result<Parsed> parse(const std::string& path) const;
  Result<std::string> drive_root(const std::string& path) const;

  Disk& disk;
  std::string current_folder;
  std::map<char, std::string> roots;  // POSIX paths by upper-case letter; empty if not ready
};
