// How long the program waits for files that another program holds open.
#pragma once

#include <functional>
#include <initializer_list>
#include <utility>

#include <windows.h>

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
