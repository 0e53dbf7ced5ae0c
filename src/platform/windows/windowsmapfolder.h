// The steps of a replacement, on Windows itself.
#pragma once

#include "platform/mapfolder.h"
#include "platform/windows/handle.h"

#include <vector>

class WindowsMapFolder : public MapFolder {
public:
  // The folder's path in its long form, and its map's name. All steps together wait as long as
  // `itspatience` lasts.
  WindowsMapFolder(std::wstring path, std::string map, Patience itspatience = Patience());

  std::string spelled(const std::string& name) override;
  Answer<std::optional<Stamp>> lock() override;
  Answer<Kind> kindof(const std::string& name) override;
  Answer<Stamp> stampof(const std::string& name) override;
  Answer<bool> holds(const std::string& name, std::string_view text) override;
  Answer<Done> flush(const std::string& name) override;
  Answer<std::string> writetemporary(std::string_view text) override;
  void remove(const std::string& name) override;
  Answer<Done> rename(const std::string& from, const std::string& to,
                      const std::string& kept) override;
  Answer<bool> renamefree(const std::string& from, const std::string& to) override;
  Answer<bool> link(const std::string& from, const std::string& to) override;

private:
  std::wstring pathof(const std::string& name) const;
  Answer<std::string> makefile(Handle& file);

  // Locks a name against other runs; false when one has it.
  Answer<bool> own(const std::string& name);

  // Takes a temporary file's hiding away, just before it takes its name.
  void show(const std::string& name);

  bool movefile(const std::string& from, const std::string& to, DWORD flags);

  const std::wstring folder;  // ends in "\"
  Patience patience;
  std::vector<Handle> locked;  // against other runs, until the replacement is over
  DWORD mapattributes = 0;     // of the locked map
};

// Removes the temporary file `name` that a killed run left in a folder, whose path ends in "\". The
// rule: the name is exactly one of `MapFolder::temporaryname`, it is an ordinary file and no link,
// and its lock can be had: a run holds those of its files, and Windows lets go of them when the run
// is killed.
void clearleftover(const std::wstring& folder, const std::wstring& name);
