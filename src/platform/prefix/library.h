// Libraries that the program loads while it runs.
#pragma once

#include "platform/result.h"

#include <string>

// The address of `symbol` in the library with that POSIX path, which is loaded and never unloaded.
// A failure has the system's reason.
Result<void*> load_symbol(const std::string& library, const char* symbol);
