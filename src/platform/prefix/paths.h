// Windows paths on a machine kept in a folder, and the POSIX paths that they stand for.
#pragma once

#include "platform/prefix/disk.h"
#include "platform/prefix/machine.h"
#include "platform/result.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

// Where a path leads.
struct Location {
  std::string folder;  // POSIX path of the folder that holds it, without "/" at its end
  std::string name;    // its own name, spelled as on the disk; empty for the root of a drive
  bool exists = true;  // whether there is an entry of that name, of whatever kind

  std::string path() const { return name.empty() ? folder + "/" : folder + "/" + name; }
};

class Paths {
public:
  // `disk_in` must outlive the object.
  explicit Paths(const Machine& machine, Disk& disk_in = system_disk());

  // Where a Windows path leads if all its names are spelled as on the disk; the disk is not asked.
  // Fails when its drive is not there, and when Windows would not allow one of its names.
  Result<Location> exact(const std::string& path) const;

  // Finds what a Windows path names, letter case ignored. Fails when its drive or a folder on the
  // way is not there, and when Windows would not allow one of its names.
  Result<Location> find(const std::string& path) const;

  // The Windows path of a POSIX path, seen from the deepest drive that holds it; of several such,
  // from `preferred` when that is one, else from the first. What is on no drive is named in the way
  // of Wine: `\\?\unix\` and the path.
  std::string windows_path(const std::string& path, char preferred = 0) const;

  // The drives' letters, in order, each with its colon.
  std::vector<std::string> drives() const;

private:
  struct Parsed {
    std::string root;                     // the POSIX path that the components start from
    std::vector<std::string> components;  // those of a relative name's folder included
  };

  static Location exactly(const Parsed& parsed);
  Result<Parsed> parse(const std::string& path) const;
  Result<std::string> drive_root(const std::string& path) const;

  Disk& disk;
  std::string current_folder;
  std::map<char, std::string> roots;  // POSIX path by upper-case letter, empty where not ready
};
