// Waits for many slow calls at the same time.
#pragma once

#include <cstddef>
#include <functional>

// Calls `task(0)` to `task(count - 1)`, each once, in any order and on several threads, and returns
// when all are done. No thread is started while the calls are fast. A task must not throw, and may
// touch nothing that another one touches.
void run_in_parallel(std::size_t count, const std::function<void(std::size_t)>& task);
