// A front end for tests: records what the form does and answers every message box.
#pragma once

#include "form/control.h"
#include "form/screen.h"

#include <functional>
#include <string>
#include <vector>

class RecordingScreen : public Screen {
public:
  void show() override { shown = true; }
  void show_caption(const std::string& text) override { caption = text; }
  void refresh(const Control&) override {}
  void append(const Control&, std::string_view) override {}
  void message_box(const std::string& text) override {
    messages.push_back(text);
    if (at_message)
      at_message();
  }
  void print_error(const std::string& text) override { errors.push_back(text); }
  void process_messages() override {
    if (pending)
      pending();
  }
  [[noreturn]] void end(int status) override { throw ProgramEnd{status}; }

  bool shown = false;
  std::string caption;
  std::vector<std::string> messages;
  std::vector<std::string> errors;
  std::function<void()> pending;  // what the user does while a search yields
  std::function<void()> at_message;
};
