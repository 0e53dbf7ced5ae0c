// Functions that are looked up at run time.
#include "platform/windows/system_library.h"

#include "platform/windows/wide_text.h"

FARPROC find_system_function(const wchar_t* library, const char* name) {
  const std::wstring path = system_text(GetSystemDirectoryW) + L"\\" + library;
  const HMODULE loaded = LoadLibraryW(path.c_str());
  return loaded ? GetProcAddress(loaded, name) : nullptr;
}
