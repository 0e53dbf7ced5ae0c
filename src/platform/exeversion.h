// The release of a game executable.
#pragma once

#include "platform/system.h"

#include <string>

// The executable's product version as four unsigned decimal numbers joined by "."; empty when the
// file is missing or carries no version resource.
std::string getexeversion(System& system, const std::string& path);
