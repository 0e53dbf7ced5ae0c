// The labels that tell on what kind of machine the program runs.
#pragma once

#include "form/form1.h"

// Sets `sysdrive` from the environment.
void set_sysdrive(Form1& form);

// Fills `Label11` to `Label18`.
void fill_info_panel(Form1& form);
