// The form in a window of the system: a control for each row of the layout, at its place.
#pragma once

#include "ui/win32/controls.h"

#include <string>
#include <string_view>
#include <vector>

#include <windows.h>

// The window's class, and the identifier of the layout's first control: the others follow it.
inline constexpr wchar_t window_class[] = L"VoraMapUpdater";
inline constexpr int first_control_id = 100;

class MainWindow {
public:
  // Mirrors the form as it is. The form must outlive the window.
  explicit MainWindow(Form1& form_in);
  MainWindow(const MainWindow&) = delete;
  MainWindow& operator=(const MainWindow&) = delete;

  // Null when the system could not make the window or one of its controls.
  HWND handle() const { return window; }

  void show();

  // Shows a control as it is now.
  void refresh(const Control& control);

  // Adds to the end of a text box.
  void append(const Control& control, std::string_view text);

  // Hands a message to the window, the keys that move between its controls included.
  void dispatch(MSG& message) const;

private:
  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM word, LPARAM detail);
  LRESULT handle(UINT message, WPARAM word, LPARAM detail);

  bool make_controls();
  void make_tooltips();
  void set_tooltip(const Mirror& mirror);
  void make_fonts();
  void fit(Mirror& mirror);
  Room room_for(const ControlLayout& row) const;
  void make_room();
  SIZE min_size() const;
  void move_into_view();
  void place();
  SIZE client_size() const;
  void place_control(const Mirror& mirror, SIZE client) const;
  void limit_size(MINMAXINFO& limits) const;
  void change_dpi(UINT new_dpi, const RECT& suggested);
  void command(WORD identifier, WORD code);
  void keep_focus(bool active);
  void leave_disabled_control(const Mirror& mirror);
  const Mirror* mirror_of(HWND control) const;
  Mirror& mirror_of(const Control& control);

  Form1& form;
  HWND window = nullptr;
  HWND tooltips = nullptr;
  HWND focused = nullptr;  // the control that had the focus when the window was last left
  UINT dpi = 96;
  bool own = false;  // a text box changes because the program adds to it
  std::vector<Mirror> mirrors;
};
