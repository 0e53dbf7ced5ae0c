// The program's search alone: finds the maps below a folder and says how many there are.
#include "discover/search.h"
#include "platform/prefix/prefix_files.h"
#include "platform/prefix/prefix_system.h"
#include "ui/console/console_screen.h"

#include <cstdio>
#include <filesystem>

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: search FOLDER\n", stderr);
    return 2;
  }
  const Machine machine = find_machine([](const Machine&) { return true; });
  PrefixFiles files(machine);
  PrefixSystem system(machine, "");
  ConsoleScreen screen(0);
  Form1 form(files, system, screen);
  const std::string root = std::filesystem::canonical(argv[1]).string();
  std::vector<std::string> found{""};
  findfiles(form, "*.galaxy", Paths(machine).windows_path(root), found);
  std::printf("%zu\n", found.size() - 1);
}
