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
  Replacing(MapFolder& folder_in, const Replacement& wanted)
      : folder(folder_in), map_name(folder_in.map_name), replacement(wanted) {}

  // Does what `OpenMap::replace` promises.
  Result<Done> run();

private:
  // A file beside the one whose name it will take. Unless it takes a name it is removed.
  class Temporary {
  public:
    Temporary(MapFolder& folder_in, std::string name_in)
        : folder(folder_in), name(std::move(name_in)) {}
    Temporary(Temporary&& other) noexcept
        : folder(other.folder), name(std::exchange(other.name, {})) {}
    Temporary& operator=(Temporary&&) = delete;
    ~Temporary();

    MapFolder::Answer<Done> take(const std::string& new_name, const std::string& kept);
    MapFolder::Answer<bool> take_no_replace(const std::string& new_name);

  private:
    MapFolder& folder;
    std::string name;  // empty when there is no file
  };

  Result<Done> lock_map();
  Result<Done> check_content();
  Result<Done> check_stamp(const std::string& name);
  Result<Done> check_map(bool by_stamp);
  Result<Done> check_companions();
  Result<Done> prepare();
  Result<Done> commit();
  Result<Done> take(std::size_t i, const std::string& kept);
  Result<Done> keep_backup();
  Result<bool> holds_map(const std::string& name);
  Result<Done> make_backup();
  Result<Done> move_aside(const std::string& name);
  Result<Done> flush(const std::string& name);
  Result<MapFolder::Kind> kind_of(const std::string& name) const;
  Result<std::string> spelled(const std::string& path);
  Failure changed() const;
  Failure failure(const std::string& action, const MapFolder::Reason& reason) const;

  MapFolder& folder;
  const std::string& map_name;
  const Replacement& replacement;
  MapFolder::Stamp stamp{};  // of the map when it was read, or compared again

  // The names on the disk of what is put in place, in order, and of a backup that is there already,
  // empty when there is none; and the files that wait to take the names.
  std::vector<std::string> names;
  std::string backup_name;
  bool backup_is_hard_link = false;  // the map's own file
  std::vector<Temporary> prepared;
};
