// The system's own controls, which mirror those of the form.
#pragma once

#include "form/form1.h"
#include "ui/layout.h"
#include "ui/win32/font.h"

#include <string>
#include <string_view>

#include <windows.h>

struct Mirror {
  const ControlLayout* row;
  Control* control;
  HWND window;
  FontHandle font;     // that of the layout
  FontHandle fitting;  // one in which its caption fits, where that needs another
};

// Makes the control of a row in `parent`, which owns it. Null on failure.
HWND make_control(const ControlLayout& row, HWND parent, int identifier);

// Shows the control's text or rows.
void show_control(const Mirror& mirror, const Form1& form);

// Adds to the end of a text box, after what the user has typed into it.
void append_text(HWND box, std::string_view text);

// What the user did with a control: `code` is that of its notification.
void notified(const Mirror& mirror, Form1& form, WORD code);

// The user presses Enter in a control: a button is pressed, a folder opened.
void entered(const Mirror& mirror, Form1& form);
