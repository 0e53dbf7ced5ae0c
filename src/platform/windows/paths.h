// Paths as the program writes them, made absolute and long enough for every tree.
#pragma once

#include "platform/result.h"

#include <string>
#include <vector>

// Where a path leads: from a root down by names, as they were written.
struct Location {
  std::string root;  // "C:\", "\\server\share\" or "\\?\"
  std::vector<std::string> names;

  // The path in the form that Windows takes without a limit of 260 characters and without a look
  // at its names: `\\?\C:\...`. A root ends in "\".
  std::wstring wide() const;

  // The path as a user reads it.
  std::string text() const;
};

// Makes a path absolute. Fails when Windows would not allow one of its names.
Result<Location> locate(const std::string& path);
