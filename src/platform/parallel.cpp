// Waits for many slow calls at the same time.
#include "platform/parallel.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <thread>
#include <vector>

namespace {

constexpr std::size_t most_threads = 16;       // more wait no shorter
constexpr std::chrono::microseconds fast(20);  // a call, on average

}  // namespace

void run_in_parallel(std::size_t count, const std::function<void(std::size_t)>& task) {
  std::atomic<std::size_t> next = 0;
  const auto start = std::chrono::steady_clock::now();
  while (next < count && std::chrono::steady_clock::now() - start < fast * (next + 1))
    task(next++);
  const auto work = [&] {
    for (std::size_t i = next++; i < count; i = next++)
      task(i);
  };
  std::vector<std::jthread> threads;
  try {
    const std::size_t wanted = std::min(most_threads, count - std::min<std::size_t>(next, count));
    threads.reserve(wanted);
    while (threads.size() + 1 < wanted)
      threads.emplace_back(work);
  } catch (const std::exception&) {  // the system has no thread left: the others do its work
  }
  work();
}
