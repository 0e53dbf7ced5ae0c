// The diagnostic file "info.txt" of debug mode, in the current folder. A file that cannot be
// written is done without.
#pragma once

#include "form/form1.h"

#include <string>

// In debug mode makes the file anew, empty.
void create_info(Form1& form);

// In debug mode adds a line.
void write_info(Form1& form, const std::string& line);
