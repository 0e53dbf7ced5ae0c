// What a front end does for the form.
#pragma once

#include <string>
#include <string_view>

class Control;

// Ends the program: thrown by `end_program`, caught by the front end's outermost frame alone.
struct ProgramEnd {
  int status;  // the process's exit status
};

class Screen {
public:
  virtual ~Screen() = default;

  // Puts the window on screen.
  virtual void show() = 0;

  // Shows the window's caption.
  virtual void show_caption(const std::string& caption) = 0;

  // Shows a control as it is now.
  virtual void refresh(const Control& control) = 0;

  // Shows that `text` was added to the end of a text box.
  virtual void appended(const Control& control, std::string_view text) = 0;

  // Shows a message box with one OK button and the program's title; returns when it is answered.
  // Lines are separated by CR LF.
  virtual void message_box(const std::string& text) = 0;

  // Tells a text where nobody is there to answer a box: on standard error, where there is one.
  virtual void print_error(const std::string& text) = 0;

  // Lets the window handle the messages that wait: repainting, its close and exit buttons.
  virtual void process_messages() = 0;

  // Ends the program at once, from inside any handler.
  [[noreturn]] virtual void end(int status) = 0;
};
