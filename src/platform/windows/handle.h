// Windows handles that close themselves, and basic operations on open files.
#pragma once

#include "platform/result.h"
#include "platform/windows/retry_budget.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <windows.h>

// An open file or folder, or none.
class Handle {
public:
  // Some calls answer null for none.
  explicit Handle(HANDLE opened = INVALID_HANDLE_VALUE)
      : handle(opened ? opened : INVALID_HANDLE_VALUE) {}
  Handle(Handle&& other) noexcept : handle(std::exchange(other.handle, INVALID_HANDLE_VALUE)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(handle, other.handle);
    return *this;
  }
  ~Handle() { static_cast<void>(close()); }

  explicit operator bool() const { return handle != INVALID_HANDLE_VALUE; }
  HANDLE get() const { return handle; }

  // Closes the file now; false when that fails.
  bool close();

private:
  HANDLE handle;
};

// CreateFileW with all sharing allowed. No handle on failure.
Handle open_file(const std::wstring& path, DWORD access, DWORD creation, DWORD flags);

// The same, with retries while another program holds the file open.
Handle open_with_retry(RetryBudget& retry_budget, const std::wstring& path, DWORD access,
                       DWORD creation, DWORD flags);

// The information about an open file; nullopt on failure.
std::optional<BY_HANDLE_FILE_INFORMATION> file_information(const Handle& file);

// Writes all of `text`; false on failure.
bool write_all(const Handle& file, std::string_view text);

// Reads up to `size` bytes, fewer only at the file's end. Returns how many; nullopt on failure.
std::optional<std::size_t> read_all(const Handle& file, char* buffer, std::size_t size);

// The system's own words for the last error.
std::string system_reason();
