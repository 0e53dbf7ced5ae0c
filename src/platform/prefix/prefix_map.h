// An open map in a folder of a Wine prefix, and the steps of its replacement there.
#pragma once

#include "platform/open_map.h"
#include "platform/prefix/descriptor.h"
#include "platform/prefix/folder_names.h"

#include <string>
#include <vector>

#include <sys/stat.h>

// A file that was read: it is still open, and `status` is from before the reading.
struct ReadFile {
  Descriptor descriptor;
  std::string folder;  // POSIX path of the folder that holds it
  std::string name;    // as the folder spells it
  struct stat status;
  OpenMap::FileState state;
  std::string text;
};

class PrefixMap : public OpenMap {
public:
  // `known_names_in` must outlive the object.
  PrefixMap(std::string path_in, ReadFile file, FolderNames::Known& known_names_in);
  ~PrefixMap() override;

  Result<FileState> lock() override;
  std::string spelled(const std::string& entry) override;
  std::string folded() const override;
  Result<Kind> kind_of(const std::string& entry) override;
  Result<FileState> state_of(const std::string& entry) override;
  Result<bool> holds(const std::string& entry, std::string_view content) override;
  Result<std::string> write_temporary(std::string_view content) override;
  void remove(const std::string& entry) override;
  Result<Done> rename(const std::string& from, const std::string& to,
                      const std::string& kept) override;
  Result<bool> rename_no_replace(const std::string& from, const std::string& to) override;
  Result<bool> link(const std::string& from, const std::string& to) override;

  // The descriptor of an entry, to be flushed; it stays open until the map is closed. -1, with
  // errno set, on failure.
  int descriptor_of(const std::string& entry);

  Failure last_error() const;

private:
  // A temporary file that is locked until the map is closed, and the permissions that it will get.
  struct Written {
    std::string name;
    Descriptor file;
    mode_t mode = 0;
  };

  Failure remove_after_failure();
  Result<std::string> make_file(Written& made, struct stat& status);
  bool set_permissions(const std::string& entry);
  const Written* find_written(const std::string& entry) const;

  const Descriptor file;
  const std::string folder_path;
  const struct stat status;
  const FileState state;
  Descriptor folder;  // open once the map is locked
  FolderNames::Known& known_names;
  FolderNames* names = nullptr;  // of the folder, once the map is locked
  std::vector<Written> written;
  std::vector<Descriptor> others;  // what is flushed
};

// Removes the stale temporary `name`, which a killed run left in an open folder. The rule: the name
// is one of `OpenMap::temporary_name`, it is an ordinary file and no symlink, and its lock is free.
// A run holds the locks of its temporary files, and the system releases them when the run is
// killed. Where the file system has no locks nothing is removed.
void remove_stale_temporary(const Descriptor& folder, const std::string& name);
