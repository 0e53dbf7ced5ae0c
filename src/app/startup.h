// What happens when the window is created, before it takes any input.
#pragma once

#include "form/form1.h"

// Runs start-up. Returns when the window is to wait for the user; a silent run, a release mismatch
// and an unknown argument end the program instead.
void startup(Form1& form);
