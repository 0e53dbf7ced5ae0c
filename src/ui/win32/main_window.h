// The front end with a window of the system: a control for each row of the layout, at its place.
#pragma once

#include "ui/win32/controls.h"

#include <string>
#include <string_view>
#include <vector>

#include <windows.h>

// The window's class, and the identifier of the layout's first control; the others count up.
inline constexpr wchar_t window_class[] = L"VoraMapUpdater";
inline constexpr int first_control_id = 100;

class MainWindow : public Screen {
public:
  MainWindow() = default;
  MainWindow(const MainWindow&) = delete;
  MainWindow& operator=(const MainWindow&) = delete;

  // Creates the window and the controls of `new_form`, whose screen is this object; false when the
  // system fails. Before it only `message_box` and `print_error` may be called.
  bool open(Form1& new_form);

  // Handles messages until the program ends.
  [[noreturn]] void run();

  void show() override;
  void show_caption(const std::string& caption) override;
  void refresh(const Control& control) override;
  void append(const Control& control, std::string_view text) override;
  void message_box(const std::string& text) override;
  void show_busy(bool on) override;
  void process_messages() override;
  [[noreturn]] void end(int status) override;

private:
  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM word, LPARAM detail);
  LRESULT handle(UINT message, WPARAM word, LPARAM detail);
  void handle_pending(UINT kinds) const;
  void dispatch(MSG& message) const;

  bool make_controls();
  void set_tooltip(const Mirror& mirror) const;
  SIZE client_size() const;
  SIZE size_for(SIZE client) const;
  void move_into_view();
  void resize_controls();
  void limit_size(MINMAXINFO& limits) const;
  void change_dpi(int new_dpi, const RECT& suggested);
  void command(WORD identifier, WORD code);
  void keep_focus(bool active);
  void leave_disabled_control(const Mirror& mirror);
  Mirror& mirror_of(const Control& control);

  Form1* form = nullptr;
  HWND window = nullptr;
  HWND tooltips = nullptr;
  HWND focused = nullptr;  // the control that had the focus when the window was last inactive
  int dpi = 96;
  bool busy = false;
  bool appending = false;  // the program is changing a text box: notifications are not the user's
  std::vector<Mirror> mirrors;
};
