// The labels that tell on what kind of machine the program runs.
#pragma once

#include "form/form1.h"

// Sets `sysdrive` from the environment.
void findsysdrive(Form1& form);

// Fills `Label11` to `Label18`.
void fillinfopanel(Form1& form);
