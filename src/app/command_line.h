// The command line, which knows the silent run alone.
#pragma once

#include "form/form1.h"

// Switches the silent run on where an argument asks for it. Any other argument ends the program
// with a message; arguments are separated by single spaces.
void examine_arguments(Form1& form);

// Whether the arguments, which are yet to be examined, will switch it on.
bool will_be_silent(System& system);
