// The front end without a window: messages go to stderr, and nobody presses a button. A long run
// shows its progress if stderr is a terminal.
#include "ui/console/console_screen.h"

#include "platform/console.h"
#include "ui/handlers.h"

#include <algorithm>

// A stage begins with its counter, and each map with the number of those converted, which is shown
// between maps as well.
void ConsoleScreen::refresh(const Control& control) {
  if (&control == &form->Label8)
    maps = 0;
  if (&control != &form->Label4)
    return;
  ++maps;
  show_progress();
}

void ConsoleScreen::print_error(const std::string& text) {
  progress.erase();
  ::print_error(text);
}

// The search does this before each folder.
void ConsoleScreen::process_messages() {
  ++folders;
  show_progress();
}

void ConsoleScreen::end(int status) {
  progress.erase();
  throw ProgramEnd{status};
}

void ConsoleScreen::show_progress() {
  if (!progress.is_due())
    return;
  const std::size_t found = form->foundlist.size() - 1;
  if (form->searching)
    progress.show("stage 1 of 2: " + std::to_string(folders) + " folders searched, " +
                  std::to_string(found) + " maps found");
  else
    progress.show("stage 2 of 2: " + std::to_string(std::min(maps, found)) + " of " +
                  std::to_string(found) + " maps checked, " + form->Label4.text() + " converted");
}

int run_console(Files& files, System& system, int columns) {
  ConsoleScreen screen(columns);
  Form1 form(files, system, screen);
  screen.open(form);
  try {
    load_form(form);
    screen.print_error("There is no window to wait in. To find and convert all maps, start the "
                       "program with the argument /silent.");
    return 1;
  } catch (const ProgramEnd& end) {
    return end.status;
  }
}
