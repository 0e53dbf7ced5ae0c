// The entries of folders.
#include "platform/windows/find_file.h"

#include <memory>
#include <string_view>

namespace {

struct FindCloser {
  void operator()(HANDLE find) const { FindClose(find); }
};
using Find = std::unique_ptr<void, FindCloser>;

Find find_first(const std::wstring& path, WIN32_FIND_DATAW& entry, DWORD flags) {
  const HANDLE find = FindFirstFileExW(path.c_str(), FindExInfoBasic, &entry, FindExSearchNameMatch,
                                       nullptr, flags);
  return Find(find == INVALID_HANDLE_VALUE ? nullptr : find);
}

// An empty drive root has not even a ".".
bool is_empty(DWORD error) { return error == ERROR_FILE_NOT_FOUND || error == ERROR_NO_MORE_FILES; }

}  // namespace

std::optional<WIN32_FIND_DATAW> find_file(const std::wstring& path) {
  WIN32_FIND_DATAW entry;
  return find_first(path, entry, 0) ? std::optional(entry) : std::nullopt;
}

bool for_each_entry(const std::wstring& folder,
                    const std::function<void(const WIN32_FIND_DATAW&)>& visit) {
  const std::wstring all = folder + (folder.ends_with(L'\\') ? L"*" : L"\\*");
  WIN32_FIND_DATAW entry;
  const Find find = find_first(all, entry, FIND_FIRST_EX_LARGE_FETCH);
  for (bool found = bool(find); found; found = FindNextFileW(find.get(), &entry)) {
    const std::wstring_view name = entry.cFileName;
    if (name != L"." && name != L"..")
      visit(entry);
  }
  return is_empty(GetLastError());
}

bool is_link(const WIN32_FIND_DATAW& entry) {
  if (!(entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT))
    return false;
  const DWORD tag = entry.dwReserved0;  // the reparse tag; Wine's symlinks have none
  return tag == 0 || IsReparseTagNameSurrogate(tag);
}
