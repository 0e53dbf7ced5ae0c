// Chooses the machine and the front end: the window where there is a display, else the console.
#include "app/installation.h"
#include "platform/console.h"
#include "platform/prefix/machine.h"
#include "platform/prefix/prefix_files.h"
#include "platform/prefix/prefix_system.h"
#include "platform/prefix/process.h"
#include "platform/printable.h"
#include "ui/console/console_screen.h"
#include "ui/qt/load_window.h"

#include <cstdio>
#include <cstdlib>
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

bool has_game(const Machine& machine) {
  PrefixFiles files(machine);
  PrefixSystem system(machine, "");
  return game_is_registered(system, files);
}

// Says once which prefix was chosen, also if the program restarts itself without its window.
void report_choice(const Machine& machine) {
  std::string text = "Using the Wine prefix " + printable(machine.folder) + ".";
  for (const std::string& other : machine.others)
    text += "\r\nThe game is also in the Wine prefix " + printable(other) + ".";
  if (!machine.others.empty())
    text += "\r\nSet WINEPREFIX to choose another.";
  print_error(text);
  setenv("WINEPREFIX", machine.folder.c_str(), 1);
}

int run(int argc, char** argv) {
  const Machine machine = find_machine(has_game);
  if (machine.current_folder.empty()) {  // as a search root it would be the whole disk
    print_error("The current folder is missing. Start the program in the folder that holds its "
                "data files.");
    return 1;
  }
  if (machine.chosen)
    report_choice(machine);
  PrefixFiles files(machine);
  PrefixSystem system(machine, argument_text(argc, argv));
  if (RunWindow* run_window = load_window(machine.program_folder))
    return run_window(files, system, argv);
  return run_console(files, system, stderr_columns());
}

}  // namespace

int main(int argc, char** argv) {
  set_up_process();
  try {
    return run(argc, argv);
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr, "%s\n", out_of_memory_message);
    return 1;
  }
}
