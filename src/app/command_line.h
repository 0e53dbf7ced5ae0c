// The command line: its only option is the silent run.
#pragma once

#include "form/form1.h"

// Switches to a silent run if an argument asks for it. Any other argument ends the program with a
// message. Arguments are separated by single spaces.
void examine_arguments(Form1& form);

// Whether an argument asks for a silent run, also if another one will be rejected: nobody waits at
// a window then.
bool will_be_silent(System& system);
