// Windows handles that close themselves, and basic operations on open files.
#pragma once

#include "platform/result.h"
#include "platform/windows/retry_budget.h"

#include <cstddef>
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
