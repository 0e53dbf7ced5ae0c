// The program on Windows itself: its machine, and a window of the system's own controls.
#include "app/command_line.h"
#include "form/form1.h"
#include "platform/windows/windows_files.h"
#include "platform/windows/windows_system.h"
#include "ui/handlers.h"
#include "ui/win32/win32_screen.h"

namespace {

// In a silent run nobody would answer a box.
void report(const std::string& text, System& system, Screen& screen) {
  if (will_be_silent(system))
    screen.print_error(text);
  else
    screen.message_box(text);
}

}  // namespace

int main() {
  WindowsFiles files;
  Win32Screen screen;
  WindowsSystem system([&](const std::string& text) { report(text, system, screen); });
  Form1 form(files, system, screen);
  if (!screen.open(form)) {
    report("The window cannot be made.", system, screen);
    return 1;
  }
  load_form(form);
  screen.run();
}
