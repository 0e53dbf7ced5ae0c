// The release of an executable: what the release check reads of the game.
#pragma once

#include "platform/system.h"

#include <string>

// An executable's product version as four unsigned decimal numbers joined by "."; empty when the
// file is missing or has no version resource.
std::string getexeversion(System& system, const std::string& path);
