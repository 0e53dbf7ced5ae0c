// Where Windows keeps a user's folder, changed for a test.
#pragma once

#include "platform/windows/wide_text.h"

#include <string>

#include <windows.h>

#include <winreg.h>

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
