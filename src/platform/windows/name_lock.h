// Locks on the names of files, between the runs on one machine.
#pragma once

#include "platform/windows/handle.h"

#include <string>

// Locks a name in a folder, whether or not there is such a file, until the handle is closed or the
// process ends in whatever way. Nothing is left behind, and no file is opened. Returns no handle on
// failure; the last error is ERROR_ALREADY_EXISTS when the name is locked already.
Handle lock_name(const std::wstring& folder, const std::wstring& name);
