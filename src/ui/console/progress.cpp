// The progress of a long run: one line on a terminal, rewritten in place.
#include "ui/console/progress.h"

#include <algorithm>
#include <iostream>

void Progress::show(std::string line) {
  line.resize(std::min(line.size(), static_cast<std::size_t>(columns - 1)));  // so that none wraps
  const std::size_t length = line.size();
  line.resize(std::max(length, shown), ' ');
  std::cerr << '\r' << line;
  shown = length;
  next = Clock::now() + std::chrono::milliseconds(100);
}

void Progress::erase() {
  if (shown > 0)
    std::cerr << '\r' << std::string(shown, ' ') << '\r';
  shown = 0;
}
