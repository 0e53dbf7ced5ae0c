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

  Result<std::string> full_path(const std::string& folder) override;
  std::size_t most_open_maps() override;
  void flush(std::span<Unflushed> files) override;

protected:
  Result<Found> find_entry(const std::string& path) override;
  Result<Listing> read_folder(const std::string& folder, std::string_view pattern) override;
  void remove_stale_temporary(const std::string& folder, const std::string& name) override;
  Result<OpenedFile> open_file(const std::string& path) override;
  Result<bool> write_text(const std::string& path, std::string_view text, Writing writing) override;
  Result<Done> remove_text(const std::string& path) override;

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

  Disk& disk;
  Paths paths;
  HiddenNames hidden_names;
  FolderNames::Known known_names;
};
