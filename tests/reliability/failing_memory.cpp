// Preloaded into a program, it lets allocations fail: FAILURES of them from number FAIL_FROM on,
// counted from 1. With ALLOCATIONS_FILE it writes their number there when the program ends.
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

extern "C" void* __libc_malloc(std::size_t size);

namespace {

std::atomic<unsigned long> allocations;

unsigned long number_from(const char* variable) {
  const char* const value = std::getenv(variable);
  return value ? std::strtoul(value, nullptr, 10) : 0;
}

[[gnu::destructor]] void write_number() {
  const char* const name = std::getenv("ALLOCATIONS_FILE");
  if (std::FILE* const file = name ? std::fopen(name, "w") : nullptr) {
    std::fprintf(file, "%lu", allocations.load());
    std::fclose(file);
  }
}

}  // namespace

extern "C" void* malloc(std::size_t size) {
  static const unsigned long first = number_from("FAIL_FROM"), failures = number_from("FAILURES");
  const unsigned long number = ++allocations;
  if (number < first || number - first >= failures)
    return __libc_malloc(size);
  errno = ENOMEM;
  return nullptr;
}
