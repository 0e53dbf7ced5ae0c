// Puts a converted map in the place of the old one, so that no instant is without the map.
#pragma once

#include "platform/files.h"
#include "platform/mapfolder.h"

#include <string>
#include <utility>
#include <vector>

// One replacement, in the folder of its map.
class Replacing {
public:
  // What is passed must outlive the object.
  Replacing(MapFolder& itsfolder, const Replacement& wanted)
      : folder(itsfolder), mapname(itsfolder.mapname), replacement(wanted) {}

  // Does what `OpenMap::replace` promises.
  Result<Done> run();

private:
  // A file beside the one whose name it will take. Unless it takes a name it is removed.
  class Temporary {
  public:
    Temporary(MapFolder& itsfolder, std::string itsname)
        : folder(itsfolder), name(std::move(itsname)) {}
    Temporary(Temporary&& other) noexcept
        : folder(other.folder), name(std::exchange(other.name, {})) {}
    Temporary& operator=(Temporary&&) = delete;
    ~Temporary();

    MapFolder::Answer<Done> take(const std::string& newname, const std::string& kept);
    MapFolder::Answer<bool> takefree(const std::string& newname);

  private:
    MapFolder& folder;
    std::string name;  // empty when there is no file
  };

  Result<Done> lockmap();
  Result<Done> checkcontent();
  Result<Done> checkstamp(const std::string& name);
  Result<Done> checkmap(bool bystamp);
  Result<Done> checkcompanions();
  Result<Done> prepare();
  Result<Done> commit();
  Result<Done> take(std::size_t i, const std::string& kept);
  Result<Done> keepbackup();
  Result<bool> holdsmap(const std::string& name);
  Result<Done> makebackup();
  Result<Done> moveaside(const std::string& name);
  Result<Done> flush(const std::string& name);
  Result<MapFolder::Kind> kindof(const std::string& name) const;
  Result<std::string> spelled(const std::string& path);
  Failure changed() const;
  Failure failure(const std::string& action, const MapFolder::Reason& reason) const;

  MapFolder& folder;
  const std::string& mapname;
  const Replacement& replacement;
  MapFolder::Stamp stamp{};  // of the map when it was read, or compared again

  // The names on the disk of what is put in place, in order, and of a backup that is there already,
  // empty when there is none; and the files that wait to take the names.
  std::vector<std::string> names;
  std::string backupname;
  bool staysasbackup = false;  // the map's own file
  std::vector<Temporary> prepared;
};
