// Where game launchers keep Wine prefixes.
#pragma once

#include <string>
#include <vector>

// The Wine prefixes of all known launchers of the user whose home is `home`, each folder once, the
// most recently used one first, by the time of its `user.reg`. What cannot be read is skipped.
std::vector<std::string> launcher_prefixes(const std::string& home);
