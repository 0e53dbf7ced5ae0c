// The steps of a replacement, in a folder of a Windows machine that is kept in a folder.
#pragma once

#include "platform/mapfolder.h"
#include "platform/prefix/folder_names.h"
#include "platform/prefix/handle.h"

#include <string>
#include <vector>

#include <sys/stat.h>

// A map that is open, and what it was before it was read.
struct MapFile {
  std::string name;  // as its folder spells it
  Handle handle;
  struct stat status;
  MapFolder::Stamp stamp;
};

class PrefixMapFolder : public MapFolder {
public:
  // The folder is open; what is passed must outlive the object.
  PrefixMapFolder(const Handle& open, FolderNames& known, const MapFile& map_in)
      : MapFolder(map_in.name), folder(open), names(known), map(map_in) {}

  // The stamp of a file that was just described.
  static Stamp stamp(const struct stat& status);

  std::string spelled(const std::string& name) override;
  Answer<std::optional<Stamp>> lock() override;
  Answer<Kind> kind_of(const std::string& name) override;
  Answer<Stamp> stamp_of(const std::string& name) override;
  Answer<bool> holds(const std::string& name, std::string_view text) override;
  Answer<Done> flush(const std::string& name) override;
  Answer<std::string> write_temporary(std::string_view text) override;
  void remove(const std::string& name) override;
  Answer<Done> rename(const std::string& from, const std::string& to,
                      const std::string& kept) override;
  Answer<bool> rename_no_replace(const std::string& from, const std::string& to) override;
  Answer<bool> link(const std::string& from, const std::string& to) override;

private:
  // A temporary file, and the permissions that it is to have.
  struct Written {
    std::string name;
    Handle file;
    mode_t mode;
  };

  Answer<std::string> make_file(Handle& file, struct stat& status);
  bool permit(const std::string& name);

  // What `use` answers for the open file of a name.
  template <class Use> auto with(const std::string& name, Use use) const;

  const Handle& folder;
  FolderNames& names;
  const MapFile& map;
  std::vector<Written> written;  // locked against other runs until the replacement is over
};

// Removes the temporary file `name` that a killed run left in an open folder. The rule: the name is
// exactly one of `MapFolder::temporary_name`, it is an ordinary file and no link, and its lock can
// be had: a run holds those of its files, and the system lets go of them when the run is killed.
// Where the file system has no locks everything stays.
void remove_stale_temporary(const Handle& folder, const std::string& name);
