// Chooses the machine and the front end: the window where there is a display, else the console.
#include "platform/prefix/machine.h"
#include "platform/prefix/prefix_files.h"
#include "platform/prefix/prefix_system.h"
#include "platform/prefix/process.h"
#include "ui/console/console_screen.h"
#include "ui/qt/load_window.h"

#include <cstdio>
#include <new>
#include <string>

namespace {

// The arguments joined by single spaces.
std::string argument_text(int argc, char** argv) {
  std::string text;
  for (int i = 1; i < argc; ++i)
    text += (i > 1 ? " " : "") + std::string(argv[i]);
  return text;
}

int run(int argc, char** argv) {
  const Machine machine = find_machine();
  PrefixFiles files(machine);
  PrefixSystem system(machine, argument_text(argc, argv));
  if (RunWindow* run_window = load_window(machine.program_folder))
    return run_window(files, system, argv);
  return run_console(files, system);
}

}  // namespace

int main(int argc, char** argv) {
  set_up_process();
  try {
    return run(argc, argv);
  } catch (const std::bad_alloc&) {
    std::fputs("Not enough memory to start the program.\n", stderr);
    return 1;
  }
}
