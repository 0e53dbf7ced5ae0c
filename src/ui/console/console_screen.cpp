// The front end without a window: messages go to stderr, and nobody presses a button.
#include "ui/console/console_screen.h"

#include "form/form1.h"
#include "ui/handlers.h"
#include "ui/write_stderr.h"

std::string ConsoleScreen::in_box(const std::string& text) { return printable(text); }

void ConsoleScreen::print_error(const std::string& text) { write_stderr(text); }

void ConsoleScreen::end(int status) { throw ProgramEnd{status}; }

int run_console(Files& files, System& system) {
  ConsoleScreen screen;
  Form1 form(files, system, screen);
  try {
    load_form(form);
    screen.print_error("There is no window to wait in. To find and convert all maps, start the "
                       "program with the argument /silent.");
    return 1;
  } catch (const ProgramEnd& end) {
    return end.status;
  }
}
