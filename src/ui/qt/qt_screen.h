// The front end with a window.
#pragma once

#include "form/screen.h"
#include "ui/qt/main_window.h"

#include <memory>

class QtScreen : public Screen {
public:
  // Makes the window of a form that has this screen. Until then there is nothing to show on.
  void open(Form1& form) { window = std::make_unique<MainWindow>(form); }

  void show() override;
  void show_caption(const std::string& caption) override;
  void refresh(const Control& control) override { window->refresh(control); }
  void appended(const Control& control, std::string_view text) override {
    window->append(control, text);
  }
  void message_box(const std::string& text) override;
  void print_error(const std::string& text) override;
  void process_messages() override;

  // Leaves the process without unwinding, since no exception may pass Qt's frames, and without the
  // destructors of Qt's own objects, which are in use. Nothing of the program's waits to be
  // written.
  [[noreturn]] void end(int status) override;

  std::unique_ptr<MainWindow> window;
};
