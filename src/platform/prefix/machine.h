// Where a Windows machine kept in a folder is, and where in it the program runs.
#pragma once

#include <string>

// POSIX paths, without "/" at their ends.
struct Machine {
  std::string folder;          // the Wine prefix; it need not exist
  std::string current_folder;  // the process's current folder
  std::string program_folder;  // the folder that holds the program's executable
};

// The machine of this process: the prefix is $WINEPREFIX; when that is unset, the nearest folder
// above the current one, or else above the program's, that holds `dosdevices` or `drive_c` beside a
// `system.reg`; else `~/.wine`.
Machine find_machine();
