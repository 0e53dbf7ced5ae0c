// The form in a window of the system: a control for each row of the layout, at its place.
#pragma once

#include "ui/win32/controls.h"

#include <string>
#include <string_view>
#include <vector>

#include <windows.h>

// The window's class, and the identifier of the layout's first control: the others follow it.
inline constexpr wchar_t windowclass[] = L"VoraMapUpdater";
inline constexpr int firstcontrol = 100;

class MainWindow {
public:
  // Mirrors the form as it is. The form must outlive the window.
  explicit MainWindow(Form1& itsform);
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

  bool makecontrols();
  void maketooltips();
  void settooltip(const Mirror& mirror);
  void makefonts();
  void fit(Mirror& mirror);
  Room roomfor(const ControlLayout& row) const;
  void makeroom();
  SIZE leastsize() const;
  void moveintoview();
  void place();
  SIZE clientsize() const;
  void placecontrol(const Mirror& mirror, SIZE client) const;
  void limitsize(MINMAXINFO& limits) const;
  void changedpi(UINT newdpi, const RECT& suggested);
  void command(WORD identifier, WORD code);
  void keepfocus(bool active);
  void leavedisabled(const Mirror& mirror);
  const Mirror* mirrorof(HWND control) const;
  Mirror& mirrorof(const Control& control);

  Form1& form;
  HWND window = nullptr;
  HWND tooltips = nullptr;
  HWND focused = nullptr;  // the control that had the focus when the window was last left
  UINT dpi = 96;
  bool own = false;  // a text box changes because the program adds to it
  std::vector<Mirror> mirrors;
};
