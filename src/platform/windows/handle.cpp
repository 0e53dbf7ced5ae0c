// Windows handles that close themselves, and basic operations on open files.
#include "platform/windows/handle.h"

#include "platform/windows/wide_text.h"

#include <algorithm>

namespace {

DWORD piece(std::size_t size) {
  return static_cast<DWORD>(std::min<std::size_t>(size, 1 << 20));  // of one call
}

}  // namespace

bool Handle::close() {
  const HANDLE closing = std::exchange(handle, INVALID_HANDLE_VALUE);
  return closing == INVALID_HANDLE_VALUE || CloseHandle(closing);
}

Handle open_file(const std::wstring& path, DWORD access, DWORD creation, DWORD flags) {
  return Handle(CreateFileW(path.c_str(), access,
                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                            creation, flags, nullptr));
}

Handle open_with_retry(RetryBudget& retry_budget, const std::wstring& path, DWORD access,
                       DWORD creation, DWORD flags) {
  Handle file;
  retry_budget.retry(sharing_errors, [&] {
    file = open_file(path, access, creation, flags);
    return bool(file);
  });
  return file;
}

std::optional<BY_HANDLE_FILE_INFORMATION> file_information(const Handle& file) {
  BY_HANDLE_FILE_INFORMATION information;
  if (!GetFileInformationByHandle(file.get(), &information))
    return std::nullopt;
  return information;
}

bool write_all(const Handle& file, std::string_view text) {
  while (!text.empty()) {
    DWORD written = 0;
    if (!WriteFile(file.get(), text.data(), piece(text.size()), &written, nullptr))
      return false;
    if (written == 0) {
      SetLastError(ERROR_WRITE_FAULT);
      return false;
    }
    text.remove_prefix(written);
  }
  return true;
}

std::optional<std::size_t> read_all(const Handle& file, char* buffer, std::size_t size) {
  std::size_t done = 0;
  while (done < size) {
    DWORD length = 0;
    if (!ReadFile(file.get(), buffer + done, piece(size - done), &length, nullptr))
      return std::nullopt;
    if (length == 0)
      break;
    done += length;
  }
  return done;
}

std::string system_reason() {
  const DWORD error = GetLastError();
  wchar_t words[512];
  const DWORD length =
      FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0,
                     words, static_cast<DWORD>(std::size(words)), nullptr);
  std::string text = narrow({words, length});
  text.erase(text.find_last_not_of(". \r\n") + 1);
  return text.empty() ? "error " + std::to_string(error) : text;
}
