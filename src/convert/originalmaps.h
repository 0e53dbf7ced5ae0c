// The list of the game's own maps, which are never converted.
#pragma once

#include "form/form1.h"

// Reads the list into `originalmaps`. When its file is missing, or `missingdata` is set already,
// the list is a single empty entry and `missingdata` is set.
void loadoriginalmaps(Form1& form);
