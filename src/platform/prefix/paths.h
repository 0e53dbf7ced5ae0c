// Maps Windows paths to the POSIX paths of a Wine prefix, and back.
#pragma once

#include "platform/prefix/disk.h"
#include "platform/prefix/machine.h"
#include "platform/result.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The file or folder that a path names.
struct Location {
  std::string folder;  // POSIX path of the parent folder, without a final "/"
  std::string name;    // spelled as on the disk; empty for the root of a drive
  bool exists = true;  // whether there is an entry of that name, of any kind

  std::string path() const { return folder + "/" + name; }
};

class Paths {
public:
  // Before a POSIX path it makes a Windows path, as Wine writes one that is on no drive.
  static constexpr char unix_namespace[] = R"(\\?\unix\)";

  // POSIX paths without a final "/" by upper-case letter; nullopt for a drive that is not ready.
  using Roots = std::map<char, std::optional<std::string>>;

  // `disk_in` must outlive the object.
  explicit Paths(const Machine& machine, Disk& disk_in = system_disk());

  // Whether names may differ from those on the disk in letter case. If not, the disk is not
  // accessed, and every name counts as there.
  enum class Spelling { any_case, exact };

  // Looks a path up. Fails if the drive or a parent folder does not exist, or if Windows would not
  // allow one of the names.
  Result<Location> find(const std::string& path, Spelling spelling = Spelling::any_case) const;

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

  Result<Parsed> parse(const std::string& path) const;
  Result<std::string> drive_root(const std::string& path) const;

  Disk& disk;
  std::string current_folder;
  Roots roots;
};
