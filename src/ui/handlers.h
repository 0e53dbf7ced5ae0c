// Loads the form, and says what its buttons and lists do.
#pragma once

#include "form/form1.h"

#include <string>

// The user presses a button, opens a folder in the directory list, selects a drive. While a search
// runs only the exit button does something.
void press(Form1& form, const Control& button);
void open_folder(Form1& form, const std::string& path);
void select_drive(Form1& form, const std::string& drive);

// The control that takes the keyboard when a button has disabled itself by being pressed: the one
// that comes next in the work, and never the exit button.
Control& focus_after(Form1& form);

// Gives the form its layout, its handlers and the current folder, and runs start-up. Returns when
// the window is to wait for the user.
void load_form(Form1& form);
