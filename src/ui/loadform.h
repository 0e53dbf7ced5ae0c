// Brings the form to life.
#pragma once

#include "form/form1.h"

// Gives the form its layout, its handlers and the current folder, and runs start-up. It returns
// when the window is to wait for the user.
void load_form(Form1& form);
