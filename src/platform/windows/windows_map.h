// An open map on Windows itself, and the steps of its replacement there.
#pragma once

#include "platform/open_map.h"
#include "platform/windows/handle.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
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
  void remove(const std::string& entry) override;
  Result<Done> rename(const std::string& from, const std::string& to,
                      const std::string& kept) override;
  Result<bool> rename_no_replace(const std::string& from, const std::string& to) override;
  Result<bool> link(const std::string& from, const std::string& to) override;

  Failure last_error() const override;

  // The content of an open file; nullopt on failure.
  static std::optional<Content> content_of(std::shared_ptr<const Handle> file);

  // Opens an entry to be flushed.
  Result<Handle> open_to_flush(const std::string& entry);

protected:
  Result<std::optional<Content>> open_to_read(const std::string& entry) override;
  Result<bool> make_temporary(const std::string& entry, std::string_view content) override;

private:
  std::wstring path_of(const std::string& entry) const;

  // Takes the lock of a name; false when another run holds it.
  Result<bool> lock_entry(const std::string& entry);

  // What comes of a call that failed: false when the name is taken, else `last_error`.
  Result<bool> false_if_taken() const;

  // Unhides a temporary file, just before it is renamed.
  void unhide(const std::string& entry);

  bool move_file(const std::string& from, const std::string& to, DWORD flags);

  const std::wstring folder;  // ends in "\"
  const std::shared_ptr<RetryBudget> retry_budget;
  std::vector<Handle> locks;  // held until the map is closed
  DWORD map_attributes = 0;   // of the locked map
};

// Deletes a file, even one that is read-only; false on failure.
bool delete_file(const std::wstring& path);
