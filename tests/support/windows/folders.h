// Folders of Windows for tests: found, removed and moved by the system's own means.
#pragma once

#include "platform/windows/find_file.h"
#include "platform/windows/paths.h"
#include "platform/windows/wide_text.h"

#include <filesystem>
#include <string>

#include <windows.h>

#include <winreg.h>

// The path that the system takes for one of the program's, however long it is.
inline std::filesystem::path system_path(const std::string& path) { return (*locate(path)).wide(); }

// Removes a folder with all that is in it, whatever its attributes and depth; links alone, never
// what they lead to.
inline void remove_folder(const std::wstring& folder) {
  for_each_entry(folder, [&](const WIN32_FIND_DATAW& entry) {
    const std::wstring path = folder + L"\\" + entry.cFileName;
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    if (!(entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
      DeleteFileW(path.c_str());
    else if (is_link(entry))
      RemoveDirectoryW(path.c_str());
    else
      remove_folder(path);
  });
  RemoveDirectoryW(folder.c_str());
}

// A folder of the user's, elsewhere for as long as the object lives. Only for a machine that was
// made for the tests: where they are broken off, it stays there.
class MovedFolder {
public:
  MovedFolder(const wchar_t* name_in, const std::string& folder) : name(name_in) {
    DWORD size = sizeof before;
    known = RegGetValueW(HKEY_CURRENT_USER, key, name, RRF_RT_ANY | RRF_NOEXPAND, nullptr, before,
                         &size) == ERROR_SUCCESS;
    set(REG_SZ, widen(folder));
  }
  MovedFolder(const MovedFolder&) = delete;
  MovedFolder& operator=(const MovedFolder&) = delete;
  ~MovedFolder() {
    if (known)
      set(REG_EXPAND_SZ, before);
    else
      RegDeleteKeyValueW(HKEY_CURRENT_USER, key, name);
  }

private:
  static constexpr wchar_t key[] =
      L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";

  void set(DWORD type, const std::wstring& text) const {
    const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
    RegSetKeyValueW(HKEY_CURRENT_USER, key, name, type, text.c_str(), size);
  }

  const wchar_t* name;
  wchar_t before[MAX_PATH] = {};
  bool known;
};
