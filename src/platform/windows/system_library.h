// Functions that are looked up at run time, because older Windows lacks them or because the
// program's own folder may hold another library of that name.
#pragma once

#include <windows.h>

// The address of a function of a library in the system's folder; null where there is none. The
// library stays loaded.
FARPROC find_system_function(const wchar_t* library, const char* name);

// The same as a pointer to a function of the type `Function`.
template <class Function> Function* system_function(const wchar_t* library, const char* name) {
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(find_system_function(library, name)));
}
