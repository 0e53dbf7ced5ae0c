// Locates the Wine prefix and the program's own folders, and tells what is wrong with a folder that
// is no prefix.
#pragma once

#include "platform/result.h"

#include <filesystem>
#include <functional>
#include <optional>
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

// Where the program may be installed: around itself and, when it was copied alone, in the usual
// folders.
std::vector<std::filesystem::path> installations(const std::filesystem::path& program_folder);

// Whether the folder holds `system.reg`, and `dosdevices` or `drive_c`.
bool is_prefix(const std::filesystem::path& folder);

// Why `subject` ("the game") is not registered in the Wine prefix that `folder` should be, in one
// line: the folder or its registry is missing or cannot be read, or has no record of it. Suggests a
// prefix in `pfx` below the folder, or one that contains it. `unread` is why the registry, which is
// there, was not read.
std::string explain_unregistered(const std::filesystem::path& folder,
                                 const std::optional<Failure>& unread, const std::string& subject);
