// Locates the Wine prefix and the program's own folders.
#pragma once

#include <functional>
#include <string>
#include <vector>

// POSIX paths, without a final "/".
struct Machine {
  std::string folder;          // the Wine prefix, which may not exist
  std::string current_folder;  // of the process; empty if it is missing
  std::string program_folder;  // of the program's executable
  bool chosen = false;         // `folder` is a launcher's prefix, or one of several with the game
  std::vector<std::string> others{};  // the other prefixes with the game, if `folder` was chosen
};

// Whether the game is registered on a machine.
using HasGame = std::function<bool(const Machine& machine)>;

// The machine of this process. The prefix is $WINEPREFIX; if that is unset, the innermost folder
// around the current one, else around the program's, with a `system.reg` and `dosdevices` or
// `drive_c`; else `~/.wine` if it has the game; else, of all launchers' prefixes that have the
// game, the most recently used one; else `~/.wine`. Where the prefix is neither named nor around a
// folder, all that have the game are found.
Machine find_machine(const HasGame& has_game);
