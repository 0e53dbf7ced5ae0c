// Windows handles that close themselves, and the few operations on files that every user needs.
#pragma once

#include "platform/result.h"

#include <cstddef>
#include <functional>
#include <initializer_list>
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

// The errors of a file that another program holds, and, for an entry that is to give way, also what
// Windows answers while somebody has it open.
inline constexpr std::initializer_list<DWORD> sharing_errors = {ERROR_SHARING_VIOLATION,
                                                                ERROR_LOCK_VIOLATION};
inline constexpr std::initializer_list<DWORD> sharing_or_access_errors = {
    ERROR_SHARING_VIOLATION, ERROR_LOCK_VIOLATION, ERROR_ACCESS_DENIED, ERROR_USER_MAPPED_FILE};

// Waits for files that another program holds for a moment, as virus scanners and indexers do. The
// waits double and last under a second in all, however many files are waited for: a map is waited
// for under two seconds, once to be read and once to be replaced.
class RetryBudget {
public:
  using Wait = std::function<void(DWORD milliseconds)>;

  explicit RetryBudget(Wait wait_in = Sleep) : wait(std::move(wait_in)) {}

  // Makes an attempt, and makes it again while it fails with one of `errors`.
  bool retry(std::initializer_list<DWORD> errors, const std::function<bool()>& attempt);

private:
  Wait wait;
  DWORD next = 15;  // milliseconds
};

// Opens a file as CreateFileW does, shared with everybody. No handle on failure.
Handle open_file(const std::wstring& path, DWORD access, DWORD creation, DWORD flags);

// The same, waiting for a file that is held.
Handle open_with_retry(RetryBudget& retry_budget, const std::wstring& path, DWORD access,
                       DWORD creation, DWORD flags);

// What a handle leads to: nothing on failure.
std::optional<BY_HANDLE_FILE_INFORMATION> file_information(const Handle& file);

// Writes all of `text`; false on failure.
bool write_all(const Handle& file, std::string_view text);

// Reads up to `size` bytes, less only at the file's end: how many, nothing on failure.
std::optional<std::size_t> read_all(const Handle& file, char* buffer, std::size_t size);

// The system's own words for the last error.
std::string system_reason();
