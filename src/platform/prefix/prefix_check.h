// Tells whether a folder is a Wine prefix, and what is wrong with one that is not.
#pragma once

#include "platform/result.h"

#include <filesystem>
#include <optional>
#include <string>

// Whether the folder holds `system.reg`, and `dosdevices` or `drive_c`.
bool is_prefix(const std::filesystem::path& folder);

// The innermost Wine prefix that contains `folder`, which may be the prefix itself.
std::optional<std::string> prefix_around(std::filesystem::path folder);

// Why `subject` ("the game") is not registered in the Wine prefix that `folder` should be, in one
// line: the folder or its registry is missing or cannot be read, or has no record of it. Suggests a
// prefix in `pfx` below the folder, or one that contains it. `unread` is why the registry, which is
// there, was not read.
std::string explain_unregistered(const std::filesystem::path& folder,
                                 const std::optional<Failure>& unread, const std::string& subject);
