// Locates the Wine prefix and the program's own folders.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

// POSIX paths, without a final "/".
struct Machine {
  std::string folder;          // the Wine prefix, which may not exist
  std::string current_folder;  // of the process; empty if it is missing
  std::string program_folder;  // of the program's executable
  std::size_t choices = 0;     // launchers' prefixes with the game, if `folder` was chosen of those
};

// Whether the game is registered on a machine.
using HasGame = std::function<bool(const Machine& machine)>;

// The machine of this process. The prefix is $WINEPREFIX; if that is unset, the innermost folder
// around the current one, else around the program's, with a `system.reg` and `dosdevices` or
// `drive_c`; else `~/.wine` if it has the game; else, of all launchers' prefixes that have the
// game, the most recently used one; else `~/.wine`. No more is read than the answer needs,
// except that prefixes with the game are counted.
Machine find_machine(const HasGame& has_game);
