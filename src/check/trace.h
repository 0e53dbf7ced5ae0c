// What happens to a map, line by line.
#pragma once

#include "check/map_run.h"

#include <string>

// For each pass which section each line became, what was written from where, and for lines that
// were copied the recognition line that nearly matched. Other copied lines are only counted.
std::string trace(const MapRun& run);
