// The files of a Windows machine that is kept in a folder.
#pragma once

#include "platform/files.h"
#include "platform/prefix/folders.h"
#include "platform/prefix/machine.h"
#include "platform/prefix/paths.h"
#include "platform/prefix/prefixmapfolder.h"

class PrefixFiles : public Files {
public:
  // `itsdisk` must outlive the object.
  explicit PrefixFiles(const Machine& machine, Disk& itsdisk = systemdisk())
      : disk(itsdisk), paths(machine, itsdisk) {}

  Result<std::string> lookup(const std::string& path, Match match) override;
  Result<std::vector<Entry>> list(const std::string& folder, std::string_view pattern) override;
  Result<std::string> fullpath(const std::string& folder) override;
  Result<std::string> read(const std::string& path) override;
  Result<std::unique_ptr<OpenMap>> openmap(const std::string& path) override;
  Result<Done> write(const std::string& path, std::string_view text) override;
  Result<Done> append(const std::string& path, std::string_view text) override;

private:
  // An open file or folder, and where it is.
  struct Opened {
    Handle handle;
    Location location;
  };

  // An open file, what it was before it was read, and what it holds.
  struct Content {
    Opened opened;
    struct stat status;
    MapFolder::Stamp stamp;
    std::string text;
  };

  // Opens what a path names. Most names are spelled as on the disk, so that is tried first.
  // `action` tells what the caller is about to do.
  Result<Opened> open(const std::string& path, int flags, const char* action) const;
  Result<Opened> openfolder(const std::string& folder) const;
  Result<Content> content(const std::string& path);
  Result<Done> writetext(const std::string& path, std::string_view text, int flags) const;

  Disk& disk;
  Paths paths;
  FolderNames names;  // of the folder in which a map was last replaced
};
