// The files of a Wine prefix.
#pragma once

#include "platform/files.h"
#include "platform/prefix/folder_names.h"
#include "platform/prefix/hidden_names.h"
#include "platform/prefix/machine.h"
#include "platform/prefix/paths.h"
#include "platform/prefix/prefix_map.h"

class PrefixFiles : public Files {
public:
  // `disk_in` must outlive the object.
  explicit PrefixFiles(const Machine& machine, Disk& disk_in = system_disk())
      : disk(disk_in), paths(machine, disk_in), hidden_names(machine.folder) {}

  Result<std::string> lookup(const std::string& path, Match match) override;
  Result<std::vector<Entry>> list(const std::string& folder, std::string_view pattern) override;
  Result<std::string> full_path(const std::string& folder) override;
  Result<std::string> read(const std::string& path) override;
  Result<std::unique_ptr<OpenMap>> open_map(const std::string& path) override;
  std::size_t most_open_maps() override;
  void flush(std::span<Unflushed> files) override;
  Result<Done> write(const std::string& path, std::string_view text) override;
  Result<Done> append(const std::string& path, std::string_view text) override;

private:
  // An open file or folder, and where it is.
  struct Opened {
    Descriptor descriptor;
    Location location;
  };

  // Opens what a path names. Most names are spelled as on the disk, so that is tried first.
  // `action` is for the failure: what the caller is about to do.
  Result<Opened> open(const std::string& path, int flags, const char* action) const;
  Result<Opened> open_folder(const std::string& folder) const;
  Result<ReadFile> read_file(const std::string& path);
  Result<Done> write_text(const std::string& path, std::string_view text, bool at_end) const;

  Disk& disk;
  Paths paths;
  HiddenNames hidden_names;
  FolderNames::Known known_names;
};
