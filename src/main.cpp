// Chooses the machine and the front end: the window where there is a display, else the console.
#include "platform/prefix/machine.h"
#include "platform/prefix/memory.h"
#include "platform/prefix/prefixfiles.h"
#include "platform/prefix/prefixsystem.h"
#include "ui/console/consolescreen.h"
#include "ui/qt/loadwindow.h"

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
  keepmemory();
  const Machine machine = findmachine();
  PrefixFiles files(machine);
  PrefixSystem system(machine, argumenttext(argc, argv));
  if (RunWindow* runwindow = loadwindow(machine.programfolder))
    return runwindow(files, system, argv);
  return runconsole(files, system);
}
