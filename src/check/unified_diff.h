// The difference between a map and its conversion.
#pragma once

#include "check/map_run.h"

#include <string>

// The changes of a conversion that succeeded, as a unified diff with three lines of context; empty
// if there are none.
std::string unified_diff(const MapRun& run);
