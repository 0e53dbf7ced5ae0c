// Functions that are looked up at run time, because older Windows lacks them or because the
// program's own folder may hold another library of that name.
#pragma once

#include "platform/windows/wide_text.h"

#include <windows.h>

// A function of a library in the system's folder, by a pointer to its type `Function`; null where
// there is none. The library stays loaded.
template <class Function> Function* system_function(const wchar_t* library, const char* name) {
  const std::wstring path = system_text(GetSystemDirectoryW) + L"\\" + library;
  const HMODULE loaded = LoadLibraryW(path.c_str());
  return loaded ? reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(loaded, name)))
                : nullptr;
}
