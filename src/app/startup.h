// What happens when the window is created, before it takes any input.
#pragma once

#include "form/form1.h"

// Runs start-up. It returns when the window is to wait for the user; a silent run, a release
// mismatch and an argument that is not known end the program instead.
void startup(Form1& form);
