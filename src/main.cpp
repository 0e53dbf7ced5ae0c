// Chooses the machine and the front end, makes the form and brings it to life.
#include "form/form1.h"
#include "platform/prefix/machine.h"
#include "platform/prefix/prefixfiles.h"
#include "platform/prefix/prefixsystem.h"
#include "ui/console/consolescreen.h"
#include "ui/loadform.h"

#include <new>
#include <string>

namespace {

// The arguments joined by single spaces.
std::string argumenttext(int argc, char** argv) {
  std::string text;
  for (int i = 1; i < argc; ++i)
    text += (i > 1 ? " " : "") + std::string(argv[i]);
  return text;
}

}  // namespace

int main(int argc, char** argv) {
  const Machine machine = findmachine();
  PrefixFiles files(machine);
  PrefixSystem system(machine, argumenttext(argc, argv));
  ConsoleScreen screen;
  Form1 form(files, system, screen);
  try {
    loadform(form);
    screen.standarderror("There is no window to wait in. To find and convert all maps, start the "
                         "program with the argument /silent.");
    return 1;
  } catch (const ProgramEnd& end) {
    return end.status;
  } catch (const std::bad_alloc&) {
    screen.standarderror("The memory is not enough. Every map is as it was or converted.");
    return 1;
  }
}
