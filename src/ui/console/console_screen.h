// The front end without a window: messages go to stderr, and nobody presses a button.
#pragma once

#include "form/screen.h"
#include "platform/files.h"
#include "platform/system.h"

class ConsoleScreen : public Screen {
public:
  void show() override {}
  void show_caption(const std::string&) override {}
  void refresh(const Control&) override {}
  void append(const Control&, std::string_view) override {}
  void message_box(const std::string& text) override { print_error(text); }
  std::string in_box(const std::string& text) override;
  void print_error(const std::string& text) override;
  void process_messages() override {}
  [[noreturn]] void end(int status) override;
};

// Runs the program to its end on a machine; returns the exit status.
int run_console(Files& files, System& system);
