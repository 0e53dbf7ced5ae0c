// A message with an OK button.
#pragma once

#include <string>

#include <windows.h>

// Shows a text, which can be selected, in a box that fits the monitor of `owner`, which may be
// null: a long text scrolls. Returns when the user has answered.
void show_message(HWND owner, const std::string& text);
