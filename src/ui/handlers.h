// Loads the form, and defines what its buttons and lists do.
#pragma once

#include "form/form1.h"

#include <string>

// The user presses a button, opens a folder in the directory list, or selects a drive. During a
// search only the exit button does anything.
void press(Form1& form, const Control& button);
void open_folder(Form1& form, const std::string& path);
void select_drive(Form1& form, const std::string& drive);

// The button that gets the keyboard focus when the pressed one has disabled itself: the next step
// of the work, never the exit button.
Control& focus_after(Form1& form);

// The user closes the window, which ends the program. During a silent run that is trouble.
[[noreturn]] void close_window(Form1& form);

// Gives the form its layout, its handlers and the current folder, then runs start-up. Returns when
// the window is ready for the user.
void load_form(Form1& form);
