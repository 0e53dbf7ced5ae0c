// Messages for nobody in particular: what a front end tells where no box would be answered.
#pragma once

#include <string_view>

// Writes a text, whose lines are separated by CR LF, to standard error, in the lines of a terminal.
void write_stderr(std::string_view text);
