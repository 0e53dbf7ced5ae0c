// The version of the operating system.
#pragma once

#include "platform/system.h"

#include <string>

// The operating system's short name, such as "win7", and the two versions on which maps are
// searched for elsewhere. Each call queries the system again; a query that fails gives the empty
// text and false.
std::string getosshortname(System& system);
bool isvista(System& system);
bool iswin7(System& system);
