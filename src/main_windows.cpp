// The program on Windows itself, in a window of the system's controls.
#include "app/command_line.h"
#include "form/form1.h"
#include "platform/windows/windows_files.h"
#include "platform/windows/windows_system.h"
#include "ui/handlers.h"
#include "ui/win32/main_window.h"

#include <cstdio>
#include <new>

namespace {

// In a silent run nobody would answer a message box.
void report(const std::string& text, System& system, Screen& screen) {
  if (will_be_silent(system))
    screen.print_error(text);
  else
    screen.message_box(text);
}

int run() {
  WindowsFiles files;
  MainWindow window;
  WindowsSystem system([&](const std::string& text) { report(text, system, window); });
  Form1 form(files, system, window);
  if (!window.open(form)) {
    report("The window cannot be made.", system, window);
    return 1;
  }
  load_form(form);
  window.run();
}

}  // namespace

int main() {
  try {
    return run();
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr, "%s\n", out_of_memory_message);
    return 1;
  }
}
