// The system's controls that mirror those of the form.
#pragma once

#include "form/form1.h"
#include "ui/layout.h"
#include "ui/win32/font.h"

#include <string_view>

#include <windows.h>

struct Mirror {
  const ControlLayout* row;
  Control* control;
  HWND window;
  FontHandle font;     // that of the layout
  FontHandle fitting;  // a smaller one, if the caption needs it
};

// Creates the control of a row in `parent`, which owns it. Null on failure.
HWND make_control(const ControlLayout& row, HWND parent, int identifier);

// Keeps a text box of many lines from taking the keys Tab and Escape, and lets Ctrl+A select its
// text.
void use_dialog_keys(HWND text_box);

// Shows the control's text or rows, and its name to screen readers. COM must be initialised on the
// thread.
void show_control(const Mirror& mirror, const Form1& form);

// Gives a control the layout's font for a monitor of `dpi` dots per inch.
void set_font(Mirror& mirror, int dpi);

// Gives a caption that is too large for its room in a client area of this width a smaller font.
// Does nothing to other controls.
void fit_caption(Mirror& mirror, const Form1& form, int client_width, int dpi);

// Moves a control to its place in a client area of the size `client`, in pixels.
void place_control(const Mirror& mirror, SIZE client, int dpi);

// Appends to a text box.
void append_text(HWND box, std::string_view text);

// Passes what the user did with a control to the form; `code` is the control's notification code.
void handle_notification(const Mirror& mirror, Form1& form, WORD code);
