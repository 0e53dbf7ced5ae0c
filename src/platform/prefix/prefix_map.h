// An open map in a folder of a Wine prefix, and the steps of its replacement there.
#pragma once

#include "platform/open_map.h"
#include "platform/prefix/descriptor.h"
#include "platform/prefix/folder_names.h"
#include "platform/prefix/paths.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/stat.h>

class PrefixMap : public OpenMap {
public:
  // `file_in` is open, and `status_in` its status from just before it is read. `known_names_in`
  // must outlive the object.
  PrefixMap(std::string path_in, std::shared_ptr<const Descriptor> file_in, Location location,
            const struct stat& status_in, FolderNames::Known& known_names_in);
  ~PrefixMap() override;

  Result<FileState> lock() override;
  std::string spelled(const std::string& entry) override;
  std::string folded() const override;
  Result<Kind> kind_of(const std::string& entry) override;
  Result<FileState> state_of(const std::string& entry) override;
  void remove(const std::string& entry) override;
  Result<Done> rename(const std::string& from, const std::string& to,
                      const std::string& kept) override;
  Result<bool> rename_no_replace(const std::string& from, const std::string& to) override;
  Result<bool> link(const std::string& from, const std::string& to) override;

  // The descriptor of an entry, to be flushed; it stays open until the map is closed. -1, with
  // errno set, on failure.
  int descriptor_of(const std::string& entry);

  Failure last_error() const override;

  // The content of an open file, by its status.
  static Content content_of(std::shared_ptr<const Descriptor> file, const struct stat& status);

protected:
  Result<std::optional<Content>> open_to_read(const std::string& entry) override;
  Result<bool> make_temporary(const std::string& entry, std::string_view content) override;

private:
  // A temporary file that is locked until the map is closed, and the permissions that it will get.
  struct Written {
    Descriptor file;
    mode_t mode = 0;
  };

  bool write(Written& made, const struct stat& made_status, std::string_view content);
  bool set_permissions(const std::string& entry);

  const std::shared_ptr<const Descriptor> file;
  const std::string folder_path;
  const struct stat status;
  const FileState state;
  Descriptor folder;  // open once the map is locked
  FolderNames::Known& known_names;
  std::shared_ptr<FolderNames> names;      // of the folder, once the map is locked
  std::map<std::string, Written> written;  // by name
  std::vector<Descriptor> others;          // what is flushed
};
