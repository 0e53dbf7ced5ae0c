// Locks on the names of files, between the runs on one machine.
#pragma once

#include "platform/windows/handle.h"

#include <string>

// Locks a name in a folder, whether there is such a file or not, until the handle is closed or the
// process ends, however it does: nothing stays behind, and no file is opened. No handle on failure,
// the last error being ERROR_ALREADY_EXISTS when the name is locked already.
Handle lock_name(const std::wstring& folder, const std::wstring& name);
