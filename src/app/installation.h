// Finds the installed editions, and selects one when there is no choice.
#pragma once

#include "form/form1.h"

// Reads the registry records of the editions, enables the buttons of those that are usable and sets
// the flags that say which were found. `is_64bit`: the machine has a 64-bit Windows.
void find_installations(Form1& form, bool is_64bit);

// Whether the registry has a record of any edition; its folder may be missing.
bool game_is_registered(System& system, Files& files);

// Selects the only edition that was found, or the base edition when none was. When both were found,
// the user selects.
void decide_edition(Form1& form);

// Reads the release of the game's executable into `foundversion`.
void read_release(Form1& form);

// Ends the program with a message when that release is not the required one; a message before it
// says why there is none. Where no release is required, why no game was found goes to stderr.
void check_release(Form1& form);
