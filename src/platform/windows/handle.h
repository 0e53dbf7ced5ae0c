// Windows handles that close themselves, basic operations on open files, and how long the program
// waits for files that another program holds open.
#pragma once

#include "platform/result.h"

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <windows.h>

struct HandleCloser {
  void operator()(HANDLE opened) const { CloseHandle(opened); }
};

// An open file or folder, or none.
using Handle = std::unique_ptr<void, HandleCloser>;

// Closes the file now; false when that fails.
inline bool close(Handle& file) { return CloseHandle(file.release()); }

// The errors of opening a file that another program holds open, and those of replacing or deleting
// one.
inline constexpr std::initializer_list<DWORD> sharing_errors = {ERROR_SHARING_VIOLATION,
                                                                ERROR_LOCK_VIOLATION};
inline constexpr std::initializer_list<DWORD> sharing_or_access_errors = {
    ERROR_SHARING_VIOLATION, ERROR_LOCK_VIOLATION, ERROR_ACCESS_DENIED, ERROR_USER_MAPPED_FILE};

// Retry budget for files that virus scanners and indexers hold open for a moment: exponential
// backoff from 15 ms, 945 ms in all, however many files share the budget.
class RetryBudget {
public:
  using Wait = std::function<void(DWORD milliseconds)>;

  explicit RetryBudget(Wait wait_in = Sleep) : wait(std::move(wait_in)) {}

  // Makes an attempt, and retries while it fails with one of `errors`.
  bool retry(std::initializer_list<DWORD> errors, const std::function<bool()>& attempt);

private:
  Wait wait;
  DWORD next = 15;  // milliseconds
};

// CreateFileW with all sharing allowed. No handle on failure.
Handle open_file(const std::wstring& path, DWORD access, DWORD creation, DWORD flags);

// The same, with retries while another program holds the file open.
Handle open_with_retry(RetryBudget& retry_budget, const std::wstring& path, DWORD access,
                       DWORD creation, DWORD flags);

// The information about an open file; nullopt on failure, also when there is no handle, which
// leaves the last error as it was.
std::optional<BY_HANDLE_FILE_INFORMATION> file_information(const Handle& file);

// Writes all of `text`; false on failure.
bool write_all(const Handle& file, std::string_view text);

// Reads up to `size` bytes, fewer only at the file's end. Returns how many; nullopt on failure.
std::optional<std::size_t> read_all(const Handle& file, char* buffer, std::size_t size);

// The system's own words for an error.
std::string system_reason(DWORD error);

// The failure of the system call that was made last: `action` at `path`.
Failure last_failure(const std::string& path, const char* action);

// U+FFFD stands for what is no character in a name: a file of such a name is not found by it.
bool is_no_text(const std::string& path);
inline constexpr char no_text[] = "its name is no text: it has an unpaired surrogate";
