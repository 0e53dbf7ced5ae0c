// The entries of folders.
#include "platform/windows/find_file.h"

#include <memory>
#include <string_view>

namespace {

struct CloseFind {
  using pointer = HANDLE;
  void operator()(HANDLE find) const { FindClose(find); }
};

// An empty drive root has not even a ".".
bool is_empty(DWORD error) { return error == ERROR_FILE_NOT_FOUND || error == ERROR_NO_MORE_FILES; }

}  // namespace

std::optional<WIN32_FIND_DATAW> find_file(const std::wstring& path) {
  WIN32_FIND_DATAW entry;
  const HANDLE find =
      FindFirstFileExW(path.c_str(), FindExInfoBasic, &entry, FindExSearchNameMatch, nullptr, 0);
  if (find == INVALID_HANDLE_VALUE)
    return std::nullopt;
  FindClose(find);
  return entry;
}

bool for_each_entry(const std::wstring& folder,
                    const std::function<void(const WIN32_FIND_DATAW&)>& visit) {
  const std::wstring all = folder + (folder.ends_with(L'\\') ? L"*" : L"\\*");
  WIN32_FIND_DATAW entry;
  const HANDLE first = FindFirstFileExW(all.c_str(), FindExInfoBasic, &entry, FindExSearchNameMatch,
                                        nullptr, FIND_FIRST_EX_LARGE_FETCH);
  if (first == INVALID_HANDLE_VALUE)
    return is_empty(GetLastError());
  const std::unique_ptr<HANDLE, CloseFind> find(first);
  do {
    const std::wstring_view name = entry.cFileName;
    if (name != L"." && name != L"..")
      visit(entry);
  } while (FindNextFileW(find.get(), &entry));
  return is_empty(GetLastError());
}

bool is_link(const WIN32_FIND_DATAW& entry) {
  if (!(entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT))
    return false;
  const DWORD tag = entry.dwReserved0;  // the reparse tag; Wine's symlinks have none
  return tag == 0 || IsReparseTagNameSurrogate(tag);
}
