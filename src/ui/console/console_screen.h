// The front end without a window: messages go to stderr, and nobody presses a button. A long run
// shows its progress if stderr is a terminal.
#pragma once

#include "form/form1.h"
#include "platform/printable.h"
#include "ui/console/progress.h"

class ConsoleScreen : public Screen {
public:
  // `columns`: the width of the terminal that stderr is; 0 if it is none.
  explicit ConsoleScreen(int columns) : progress(columns) {}

  // The form whose screen this is. Call it before any other function.
  void open(const Form1& new_form) { form = &new_form; }

  void show() override {}
  void show_caption(const std::string&) override {}
  void refresh(const Control& control) override;
  void append(const Control&, std::string_view) override {}
  void message_box(const std::string& text) override { print_error(text); }
  bool has_boxes() const override { return false; }
  std::string in_box(const std::string& text) override { return printable(text); }
  void print_error(const std::string& text) override;
  void process_messages() override;
  [[noreturn]] void end(int status) override;

private:
  void show_progress();

  const Form1* form = nullptr;
  Progress progress;
  long folders = 0;      // that the search has reached
  std::size_t maps = 0;  // that the conversion has reached
};

// Runs the program to its end on a machine; returns the exit status. `columns`: see above.
int run_console(Files& files, System& system, int columns);
