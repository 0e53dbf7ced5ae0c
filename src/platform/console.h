// What the programs have from whoever started them: arguments, standard output and stderr.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// The arguments after the program's name, in UTF-8, from those of `main`.
std::vector<std::string> command_line(int argc, char** argv);

// Writes a text as it is to standard output; false when it cannot be written.
bool print(std::string_view text);

// Writes a message, whose lines end in CR LF but for the last, as lines of the system to stderr,
// without what could disturb a terminal. On Windows a program with a window has no stderr unless it
// was redirected: then the message goes to the console of the program that started it.
void print_error(std::string_view message);

// Whether standard output is a terminal that shows colours.
bool output_has_colours();
