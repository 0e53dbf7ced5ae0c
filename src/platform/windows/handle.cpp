// Windows handles that close themselves, and basic operations on open files.
#include "platform/windows/handle.h"

#include "platform/windows/wide_text.h"

#include <algorithm>

namespace {

DWORD piece(std::size_t size) {
  return static_cast<DWORD>(std::min<std::size_t>(size, 1 << 20));  // of one call
}

using Errors = std::initializer_list<DWORD>;
constexpr Errors missing_errors = {ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND};

// What another map of the batch may have used up, and will have given back.
constexpr DWORD disk_quota_exceeded = 1295;  // ERROR_DISK_QUOTA_EXCEEDED; some headers lack it
constexpr Errors shortage_errors = {ERROR_DISK_FULL,           ERROR_HANDLE_DISK_FULL,
                                    ERROR_NOT_ENOUGH_MEMORY,   ERROR_OUTOFMEMORY,
                                    ERROR_TOO_MANY_OPEN_FILES, ERROR_NO_SYSTEM_RESOURCES,
                                    disk_quota_exceeded};

bool is_one_of(Errors errors, DWORD error) { return std::ranges::count(errors, error) > 0; }

}  // namespace

Handle open_file(const std::wstring& path, DWORD access, DWORD creation, DWORD flags) {
  const HANDLE file =
      CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                  nullptr, creation, flags, nullptr);
  return Handle(file == INVALID_HANDLE_VALUE ? nullptr : file);
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
  if (!file || !GetFileInformationByHandle(file.get(), &information))
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

std::string system_reason(DWORD error) {
  wchar_t words[512];
  const DWORD length =
      FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0,
                     words, static_cast<DWORD>(std::size(words)), nullptr);
  std::string text = narrow({words, length});
  text.erase(text.find_last_not_of(". \r\n") + 1);
  return text.empty() ? "error " + std::to_string(error) : text;
}

bool is_no_text(const std::string& path) { return path.find("\xEF\xBF\xBD") != path.npos; }

Failure last_failure(const std::string& path, const char* action) {
  const DWORD error = GetLastError();
  const bool missing = is_one_of(missing_errors, error);
  if (missing && is_no_text(path))
    return {path, action, no_text};
  const auto other =
      is_one_of(shortage_errors, error) ? Failure::Kind::shortage : Failure::Kind::other;
  return {path, action, system_reason(error), missing ? Failure::Kind::missing : other};
}
