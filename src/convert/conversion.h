// The conversion run over the maps that the search has found.
#pragma once

#include "form/form1.h"

// Converts every map of `foundlist` that is older than the current format and not one of the
// game's own, and lists the converted ones in `Text2`. Companions of a map afterwards, whose names
// are the map's with the last three characters replaced:
//   "old"  the map as it was
//   "fix"  the expansion only: the result of the first pass
//   "tst"  debug mode only: the result, and the map itself is as it was
// A map that cannot be converted is skipped; the skipped maps are reported at the end of the run. A
// template that cannot write what a map asks for ends the program with a message.
void fixgalaxies(Form1& form);
