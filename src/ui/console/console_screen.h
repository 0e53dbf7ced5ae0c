// The front end without a window: messages go to stderr, and nobody presses a button. A long run
// shows its progress if stderr is a terminal: one line, rewritten in place.
#pragma once

#include "form/form1.h"

#include <chrono>

class ConsoleScreen : public Screen {
public:
  // `columns`: the width of the terminal that stderr is; 0 if it is none, and no progress is shown.
  explicit ConsoleScreen(int columns_in) : columns(columns_in) {}

  // The form whose screen this is. Call it before any other function.
  void open(const Form1& new_form) { form = &new_form; }

  void show() override {}
  void show_caption(const std::string&) override {}
  void refresh(const Control& control) override;
  void append(const Control&, std::string_view) override {}
  void message_box(const std::string& text) override { print_error(text); }
  bool has_boxes() const override { return false; }
  void print_error(const std::string& text) override;
  void process_messages() override;
  [[noreturn]] void end(int status) override;

private:
  using Clock = std::chrono::steady_clock;

  void show_progress();
  void erase_progress();

  const Form1* form = nullptr;
  const int columns;
  long folders = 0;       // that the search has reached
  std::size_t maps = 0;   // that the conversion has reached
  std::size_t shown = 0;  // characters of progress
  Clock::time_point next_progress = Clock::now() + std::chrono::seconds(1);
};

// Runs the program to its end on a machine; returns the exit status. `columns`: see above.
int run_console(Files& files, System& system, int columns);
