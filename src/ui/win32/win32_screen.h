// The front end with a window of the system's own controls.
#pragma once

#include "form/screen.h"
#include "ui/win32/main_window.h"

#include <memory>

class Win32Screen : public Screen {
public:
  // Makes the window of a form that has this screen; false when the system has none to give. Until
  // then there are message boxes only.
  bool open(Form1& form);

  // Waits for the user until the program ends.
  [[noreturn]] void run();

  void show() override;
  void show_caption(const std::string& caption) override;
  void refresh(const Control& control) override { window->refresh(control); }
  void appended(const Control& control, std::string_view text) override {
    window->append(control, text);
  }
  void message_box(const std::string& text) override;
  void print_error(const std::string& text) override;
  void process_messages() override;
  [[noreturn]] void end(int status) override;

private:
  std::unique_ptr<MainWindow> window;
};
