// The target file: which release of the game the program is for, and whether debug mode is on.
#pragma once

#include "form/form1.h"

// Reads the target file and switches debug mode on where it says so.
void read_target(Form1& form);

// Ends the program with a message when the installed release is not the target. There is no check
// when both editions are found, a data file is missing or debug mode is on.
void check_release(Form1& form);
