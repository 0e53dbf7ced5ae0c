// A folder of a test's own on Windows.
#pragma once

#include "platform/windows/find_file.h"
#include "platform/windows/paths.h"
#include "platform/windows/wide_text.h"

#include <filesystem>
#include <string>

#include <windows.h>

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

class ScratchFolder {
public:
  ScratchFolder() {
    wchar_t folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    path = narrow(folder) + "vora-test-" + std::to_string(GetCurrentProcessId());
    std::filesystem::create_directories(system_path(path));
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder() { remove_folder(system_path(path).wstring()); }

  std::string operator/(const std::string& name) const { return path + "\\" + name; }

  std::string path;  // without "\" at its end
};
