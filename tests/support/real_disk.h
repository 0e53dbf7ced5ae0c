// A file system of a test's own, made in a file and mounted where this process alone sees it.
#pragma once

#include <filesystem>
#include <string>

class RealDisk {
public:
  // Mounts a new file system of a kind ("ext4") over `where`, which is made when it is missing.
  // That takes root, the kind's mkfs, and a system that knows the kind: see the conversion to bool.
  RealDisk(const std::string& kind, std::filesystem::path where);
  RealDisk(const RealDisk&) = delete;
  RealDisk& operator=(const RealDisk&) = delete;
  ~RealDisk();

  explicit operator bool() const { return mounted; }

  // Brings everything to the disk.
  void flush() const;

  // Stops the file system as a power cut would: what is not on the disk yet never gets there. False
  // where the system knows no such thing of this kind.
  [[nodiscard]] bool cut_power() const;

  // Lets the file system find its way back, as it does when the power returns.
  [[nodiscard]] bool restart() const;

private:
  bool mount() const;

  const std::filesystem::path folder, image;
  bool mounted;
};
