// Finds the installed editions, and selects one where there is no choice.
#pragma once

#include "form/form1.h"

// Reads the registry records of the editions, enables the buttons of those that are usable and sets
// the flags that say which were found.
void find_installations(Form1& form);

// Selects the edition of which alone something is found, the base edition when nothing is. With
// both found it is the user who selects.
void decide_edition(Form1& form);

// Reads the release of the game's executable into `foundversion`.
void read_release(Form1& form);
