// The program on Windows itself: its machine, and a window of the system's own controls.
#include "app/commandline.h"
#include "form/form1.h"
#include "platform/windows/windowsfiles.h"
#include "platform/windows/windowssystem.h"
#include "ui/loadform.h"
#include "ui/win32/win32screen.h"

int main() {
  WindowsFiles files;
  Win32Screen screen;
  // In a silent run nobody would answer a box.
  WindowsSystem system([&](const std::string& text) {
    if (willbesilent(system))
      screen.standarderror(text);
    else
      screen.messagebox(text);
  });
  Form1 form(files, system, screen);
  if (!screen.open(form)) {
    screen.standarderror("The window cannot be made.");
    return 1;
  }
  loadform(form);
  screen.run();
}
