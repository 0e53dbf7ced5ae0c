// What the programs have from whoever started them: arguments, standard output and stderr.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// The arguments after the program's name, in UTF-8, from those of `main`.
std::vector<std::string> command_line(int argc, char** argv);

// Writes a text as it is to standard output; false when it cannot be written.
bool print(std::string_view text);

// Writes a message and a line end to stderr; on Windows a program with a window, whose stderr was
// not redirected, writes to the console that it was started from. The message's lines are separated
// by CR LF; they come out as the system's lines, and without what could disturb a terminal.
void print_error(std::string_view message);

// Whether standard output is a terminal that shows colours.
bool output_has_colours();
