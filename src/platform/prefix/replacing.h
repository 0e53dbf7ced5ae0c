// Puts a converted map in the place of the old one, so that no instant is without the map.
#pragma once

#include "platform/files.h"
#include "platform/prefix/folders.h"
#include "platform/prefix/handle.h"
#include "platform/prefix/temporaryfile.h"

#include <string>
#include <vector>

#include <sys/stat.h>

// One replacement, in the open folder of its map.
class Replacing {
public:
  // `map` is the map's name in the folder; what is passed must outlive the object.
  Replacing(const Handle& open, FolderNames& known, std::string map, const Replacement& wanted)
      : folder(open), names(known), mapname(std::move(map)), replacement(wanted) {}

  // Does what `Files::replace` promises.
  Result<Done> run();

private:
  // A file that waits to take its name.
  struct Prepared {
    TemporaryFile file;
    std::string name;
  };

  Result<Done> checkmap();
  Result<Done> checkcompanions();
  Result<Done> prepare();
  Result<Done> commit();
  Result<Done> keepbackup();
  Result<bool> holdsmap(const std::string& name, const struct stat& status) const;
  Result<Done> moveaside(const std::string& name);
  Result<Done> makebackup(const std::string& name);
  std::string spelled(const std::string& path);
  bool lookat(const std::string& name, struct stat& status) const;
  Failure failure(const std::string& action) const;

  const Handle& folder;
  FolderNames& names;
  const std::string mapname;
  const Replacement& replacement;
  struct stat mapstatus {};
  std::vector<Prepared> prepared;
};
