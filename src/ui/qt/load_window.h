// Loads the window, which is a library of its own: the program itself needs nothing of it.
#pragma once

#include "platform/files.h"
#include "platform/system.h"

#include <string>

// Runs the program on a machine, in a window, to its end; gives the exit status. `argv` is the
// process's own.
using RunWindow = int(Files& files, System& system, char** argv);

// The window's entry. Nothing when there is no display, and when the window cannot be loaded, which
// standard error then tells. The library lies beside the program in `program_folder` or, once
// installed, in its own folder among the system's libraries.
RunWindow* load_window(const std::string& program_folder);

// Starts the process anew, as if there were no display: the one that it was told of takes nobody.
[[noreturn]] void restart_without_display(char** argv);
