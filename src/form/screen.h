// What a front end does for the form.
#pragma once

#include "platform/console.h"

#include <string>
#include <string_view>

class Control;

// A front end may throw this to end the program; only its outermost frame catches it.
struct ProgramEnd {
  int status;  // the process's exit status
};

// Texts are UTF-8, their lines separated by CR LF.
class Screen {
public:
  virtual ~Screen() = default;

  // Puts the window on screen. User input waits: the form is not ready for it yet.
  virtual void show() = 0;

  virtual void show_caption(const std::string& caption) = 0;

  // Shows a control as it is now.
  virtual void refresh(const Control& control) = 0;

  // Appends `text` to what a text box shows.
  virtual void append(const Control& control, std::string_view text) = 0;

  // Shows a message box with the program's title and an OK button; returns when it is answered.
  virtual void message_box(const std::string& text) = 0;

  // Whether `message_box` shows a box; else it prints the text as `print_error` does.
  virtual bool has_boxes() const { return true; }

  // Writes a message to stderr, where there is one: in a silent run nobody answers a box.
  virtual void print_error(const std::string& text) { ::print_error(text); }

  // Shows by the pointer whether the program is busy.
  virtual void show_busy(bool busy) { static_cast<void>(busy); }

  // Handles the window's pending messages: repainting, the close and exit buttons.
  virtual void process_messages() = 0;

  // Shows the window system during a long operation that the program has not hung; user input
  // waits. Where the system asks for no sign of life it does nothing.
  virtual void show_alive() {}

  // Ends the program at once, from inside any handler.
  [[noreturn]] virtual void end(int status) = 0;
};

// Shows that the program is busy for as long as it lives.
class BusyPointer {
public:
  explicit BusyPointer(Screen& screen_in) : screen(screen_in) { screen.show_busy(true); }
  BusyPointer(const BusyPointer&) = delete;
  BusyPointer& operator=(const BusyPointer&) = delete;
  ~BusyPointer() { screen.show_busy(false); }

private:
  Screen& screen;
};
