// Locks on the names of files: each is a system mutex, named after the file, that exists as long as
// somebody holds the lock.
#include "platform/windows/name_lock.h"

#include "platform/letter_case.h"
#include "platform/windows/wide_text.h"

#include <cstdint>

namespace {

// The folder's canonical path, so that symlinks and substituted drives give the same lock; the path
// as given where the system has none.
std::wstring final_path(const std::wstring& folder) {
  const Handle open =
      open_file(folder, FILE_READ_ATTRIBUTES, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
  const std::wstring path = system_text([&](wchar_t* text, DWORD size) {
    return GetFinalPathNameByHandleW(open.get(), text, size, VOLUME_NAME_DOS);
  });
  return path.empty() ? folder : path;
}

// FNV-1a. A mutex's name can hold no path, which has separators and may be too long.
std::uint64_t hash_of(std::string_view text) {
  std::uint64_t hash = 14695981039346656037u;
  for (const char c : text)
    hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211u;
  return hash;
}

}  // namespace

Handle lock_name(const std::wstring& folder, const std::wstring& name) {
  const std::string path = lowercase(narrow(final_path(folder) + L"\\" + name));
  const std::wstring mutex = L"Global\\vora-map-updater-" + std::to_wstring(hash_of(path));
  SetLastError(ERROR_SUCCESS);
  Handle lock(CreateMutexW(nullptr, FALSE, mutex.c_str()));
  const DWORD error = GetLastError();
  // The mutex of another user is denied.
  if (error != ERROR_ALREADY_EXISTS && error != ERROR_ACCESS_DENIED)
    return lock;
  lock.reset();
  SetLastError(ERROR_ALREADY_EXISTS);
  return lock;
}
