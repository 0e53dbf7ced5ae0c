// Slow calls are waited for together, and each is made once.
#include "platform/parallel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

TEST(Parallel, CallsEachTaskOnceAndSlowOnesTogether) {
  for (const std::size_t count : {0u, 1u, 2u, 17u, 64u, 500u}) {
    for (const auto pause : {std::chrono::microseconds(0), std::chrono::microseconds(1000)}) {
      std::vector<int> calls(count);
      std::atomic<int> running = 0, most = 0;
      run_in_parallel(count, [&](std::size_t i) {
        ++calls[i];
        const int now = ++running;
        for (int before = most; before < now && !most.compare_exchange_weak(before, now);)
          ;
        if (pause.count() > 0)
          std::this_thread::sleep_for(pause);
        --running;
      });
      EXPECT_EQ(calls, std::vector<int>(count, 1));
      EXPECT_TRUE(most > 1 || count < 3 || pause.count() == 0) << count;
    }
  }
}
