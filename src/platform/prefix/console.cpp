// What a program without a window has from its machine: its arguments, standard output and stderr.
#include "platform/console.h"

#include <iostream>

#include <unistd.h>

std::vector<std::string> command_line(int argc, char** argv) {
  return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

bool print(std::string_view text) { return bool(std::cout << text << std::flush); }
void print_error(std::string_view text) { std::cerr << text; }

bool output_has_colours() { return isatty(STDOUT_FILENO) != 0; }
