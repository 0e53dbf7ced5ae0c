// The front end without a window: messages go to stderr, and nobody presses a button. A long run
// shows its progress if stderr is a terminal: one line, rewritten in place.
#include "ui/console/console_screen.h"

#include "ui/handlers.h"

#include <algorithm>
#include <iostream>

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
  erase_progress();
  Screen::print_error(text);
}

// The search does this before each folder.
void ConsoleScreen::process_messages() {
  ++folders;
  show_progress();
}

void ConsoleScreen::end(int status) {
  erase_progress();
  throw ProgramEnd{status};
}

// At most ten times a second.
void ConsoleScreen::show_progress() {
  if (columns == 0 || Clock::now() < next_progress)
    return;
  const std::size_t found = form->foundlist.size() - 1;
  std::string line = form->searching
                         ? "stage 1 of 2: " + std::to_string(folders) + " folders searched, " +
                               std::to_string(found) + " maps found"
                         : "stage 2 of 2: " + std::to_string(std::min(maps, found)) + " of " +
                               std::to_string(found) + " maps checked, " + form->Label4.text() +
                               " converted";
  line.resize(std::min(line.size(), static_cast<std::size_t>(columns - 1)));  // so that none wraps
  const std::size_t before = std::exchange(shown, line.size());
  line.resize(std::max(before, shown), ' ');
  std::cerr << '\r' << line;
  next_progress = Clock::now() + std::chrono::milliseconds(100);
}

void ConsoleScreen::erase_progress() {
  if (shown > 0)
    std::cerr << '\r' << std::string(shown, ' ') << '\r';
  shown = 0;
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
