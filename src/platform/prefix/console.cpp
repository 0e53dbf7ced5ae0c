// The programs' arguments, standard output and stderr.
#include "platform/console.h"

#include "platform/printable.h"

#include <iostream>

#include <unistd.h>

std::vector<std::string> command_line(int argc, char** argv) {
  return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

bool print(std::string_view text) { return bool(std::cout << text << std::flush); }

void print_error(std::string_view message) {
  for (auto end = message.find("\r\n"); end != message.npos; end = message.find("\r\n")) {
    std::cerr << printable(message.substr(0, end)) << '\n';
    message.remove_prefix(end + 2);
  }
  std::cerr << printable(message) << '\n';
}

bool output_has_colours() { return isatty(STDOUT_FILENO) != 0; }
