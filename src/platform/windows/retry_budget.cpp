// How long the program waits for files that another program holds open.
#include "platform/windows/retry_budget.h"

#include <algorithm>

namespace {

constexpr DWORD longest_wait = 480;  // milliseconds; 945 in all

}  // namespace

bool RetryBudget::retry(std::initializer_list<DWORD> errors, const std::function<bool()>& attempt) {
  for (;; next *= 2) {
    if (attempt())
      return true;
    const DWORD error = GetLastError();
    if (next > longest_wait || std::find(errors.begin(), errors.end(), error) == errors.end())
      return false;
    wait(next);
  }
}
