// The program on Windows itself: its machine, and a window of the system's own controls.
#include "form/form1.h"
#include "platform/windows/windowsfiles.h"
#include "platform/windows/windowssystem.h"
#include "ui/loadform.h"
#include "ui/win32/win32screen.h"

int main() {
  WindowsFiles files;
  Win32Screen screen;
  WindowsSystem system([&](const std::string& text) { screen.messagebox(text); });
  Form1 form(files, system, screen);
  if (!screen.open(form)) {
    screen.standarderror("The window cannot be made.");
    return 1;
  }
  loadform(form);
  screen.run();
}
