// The progress of a long run: one line on a terminal, rewritten in place.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

class Progress {
public:
  // `columns`: the width of the terminal that stderr is; 0 if it is none, and nothing is shown.
  explicit Progress(int columns_in) : columns(columns_in) {}

  // Whether a line may be shown: not in the run's first second, and at most ten times a second.
  bool is_due() const { return columns > 0 && Clock::now() >= next; }

  // Shows a line of ASCII in place of the last, cut to the terminal's width.
  void show(std::string line);

  // Erases the line, before other output and at the end.
  void erase();

private:
  using Clock = std::chrono::steady_clock;

  const int columns;
  std::size_t shown = 0;  // characters
  Clock::time_point next = Clock::now() + std::chrono::seconds(1);
};
