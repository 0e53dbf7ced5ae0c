// The front end without a window: messages go to standard error, nobody presses a button.
#include "ui/console/consolescreen.h"

#include <iostream>

void ConsoleScreen::standarderror(const std::string& text) {
  std::string_view rest = text;
  for (auto end = rest.find("\r\n"); end != std::string_view::npos; end = rest.find("\r\n")) {
    std::cerr << rest.substr(0, end) << '\n';
    rest.remove_prefix(end + 2);
  }
  std::cerr << rest << '\n';
}

void ConsoleScreen::end(int status) { throw ProgramEnd{status}; }
