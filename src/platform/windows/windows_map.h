// An open map on Windows itself, and the steps of its replacement there.
#pragma once

#include "platform/open_map.h"
#include "platform/windows/handle.h"

#include <memory>
#include <vector>

// Windows renames no file that is open, so each step opens what it needs.
class WindowsMap : public OpenMap {
public:
  // `folder_in` is the path of the map's folder in its long form. All steps together wait no longer
  // than `retry_in` lasts, which other maps may share.
  WindowsMap(std::string path_in, std::wstring folder_in, std::string name_in, std::string text_in,
             std::shared_ptr<RetryBudget> retry_in = std::make_shared<RetryBudget>());

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

  Failure last_error() const;

  // Opens an entry to be flushed.
  Result<Handle> open_to_flush(const std::string& entry);

private:
  std::wstring path_of(const std::string& entry) const;
  Result<std::string> make_file(Handle& file);

  // Takes the lock of a name; false when another run holds it.
  Result<bool> lock_entry(const std::string& entry);

  // Unhides a temporary file, just before it is renamed.
  void unhide(const std::string& entry);

  bool move_file(const std::string& from, const std::string& to, DWORD flags);

  const std::wstring folder;  // ends in "\"
  const std::shared_ptr<RetryBudget> retry_budget;
  std::vector<Handle> locks;  // held until the map is closed
  DWORD map_attributes = 0;   // of the locked map
};

// Removes the stale temporary `name`, which a killed run left in a folder, whose path ends in "\".
// The rule: the name is one of `OpenMap::temporary_name`, it is an ordinary file and no link, and
// its lock is free. A run holds the locks of its temporary files, and Windows releases them when
// the run is killed.
void remove_stale_temporary(const std::wstring& folder, const std::wstring& name);
