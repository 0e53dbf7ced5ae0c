// What a program without a window has from its machine: its arguments, standard output and stderr.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// The arguments after the program's name, in UTF-8, from those of `main`.
std::vector<std::string> command_line(int argc, char** argv);

// Write a text as it is; false when it cannot be written.
bool print(std::string_view text);
void print_error(std::string_view text);

// Whether standard output is a terminal that shows colours.
bool output_has_colours();
