// The steps of a replacement, on Windows itself.
#pragma once

#include "platform/mapfolder.h"
#include "platform/windows/handle.h"

#include <vector>

class WindowsMapFolder : public MapFolder {
public:
  // The folder's path in its long form, and its map's name. All steps together wait as long as
  // `retry_in` lasts.
  WindowsMapFolder(std::wstring path, std::string map, RetryBudget retry_in = RetryBudget());

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
  std::wstring path_of(const std::string& name) const;
  Answer<std::string> make_file(Handle& file);

  // Locks a name against other runs; false when one has it.
  Answer<bool> own(const std::string& name);

  // Takes a temporary file's hiding away, just before it takes its name.
  void show(const std::string& name);

  bool move_file(const std::string& from, const std::string& to, DWORD flags);

  const std::wstring folder;  // ends in "\"
  RetryBudget retry_budget;
  std::vector<Handle> locked;  // against other runs, until the replacement is over
  DWORD map_attributes = 0;    // of the locked map
};

// Removes the temporary file `name` that a killed run left in a folder, whose path ends in "\". The
// rule: the name is exactly one of `MapFolder::temporary_name`, it is an ordinary file and no link,
// and its lock can be had: a run holds those of its files, and Windows lets go of them when the run
// is killed.
void remove_stale_temporary(const std::wstring& folder, const std::wstring& name);
