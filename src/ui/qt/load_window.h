// Loads the window. It is a library of its own, so that the program itself needs no Qt.
#pragma once

#include "platform/files.h"
#include "platform/system.h"

#include <string>

// Runs the program in a window to its end, on a machine; returns the exit status. `argv` is the
// process's.
using RunWindow = int(Files& files, System& system, char** argv);

// Returns the window's entry; null when there is no display or, with a message on stderr, when the
// library cannot be loaded. The library is in `program_folder`, beside the program, or once
// installed in a folder of its own among the system's libraries. The entry's name holds the
// program's version, so that no library of another version is used.
RunWindow* load_window(const std::string& program_folder);

// Reports that the window cannot be shown on the display in the environment, with the reasons that
// the window's library gives, one a line; replaces the process by a new run without a display.
[[noreturn]] void restart_without_display(char** argv, const std::string& reasons);
