// Locates the Wine prefix and the program's own folders.
#pragma once

#include <string>

// POSIX paths, without a final "/".
struct Machine {
  std::string folder;          // the Wine prefix, which may not exist
  std::string current_folder;  // of the process
  std::string program_folder;  // of the program's executable
};

// The machine of this process. The prefix is $WINEPREFIX; if that is unset, the innermost folder
// around the current one, else around the program's, with a `system.reg` and `dosdevices` or
// `drive_c`; else `~/.wine`.
Machine find_machine();
