// The program on Windows itself: its machine, and a window of the system's own controls.
#include "app/commandline.h"
#include "form/form1.h"
#include "platform/windows/windowsfiles.h"
#include "platform/windows/windowssystem.h"
#include "ui/loadform.h"
#include "ui/win32/win32screen.h"

namespace {

// In a silent run nobody would answer a box.
void tell(const std::string& text, System& system, Screen& screen) {
  if (willbesilent(system))
    screen.standarderror(text);
  else
    screen.messagebox(text);
}

}  // namespace

int main() {
  WindowsFiles files;
  Win32Screen screen;
  WindowsSystem system([&](const std::string& text) { tell(text, system, screen); });
  Form1 form(files, system, screen);
  if (!screen.open(form)) {
    tell("The window cannot be made.", system, screen);
    return 1;
  }
  loadform(form);
  screen.run();
}
