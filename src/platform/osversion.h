// The operating system's short name, and the two versions on which maps are looked for elsewhere.
// Each call asks the system anew; a query that fails gives the empty text and false.
#pragma once

#include "platform/system.h"

#include <string>

std::string getosshortname(System& system);
bool isvista(System& system);
bool iswin7(System& system);
