// Makes paths absolute, in the form that Windows accepts without a limit on their length.
#pragma once

#include "platform/result.h"

#include <string>
#include <vector>

// An absolute path: a root and the names below it, spelled as given.
struct AbsolutePath {
  std::string root;  // "C:\", "\\server\share\" or "\\?\"
  std::vector<std::string> names;

  // The path as `\\?\C:\...`, which Windows takes as it is and with more than 260 characters. The
  // path of a root ends in "\".
  std::wstring wide() const;

  // The path as shown to a user.
  std::string text() const;
};

// Makes a path absolute. Fails if Windows would not allow one of its names.
Result<AbsolutePath> locate(const std::string& path);
