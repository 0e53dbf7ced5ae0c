// Loads the window. It is a library of its own, so that the program itself needs no Qt.
#include "ui/qt/load_window.h"

#include "ui/write_stderr.h"

#include <cstdlib>
#include <filesystem>

#include <dlfcn.h>
#include <unistd.h>

namespace {

constexpr const char* display_variables[] = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};

bool has_display() {
  for (const char* variable : display_variables)
    if (const char* value = std::getenv(variable); value && *value)
      return true;
  return false;
}

std::string find_library(const std::string& program_folder) {
  const std::string beside = program_folder + "/" + WINDOWLIBRARY;
  return std::filesystem::exists(beside)
             ? beside
             : program_folder + "/" + LIBRARYFOLDER + "/" + WINDOWLIBRARY;
}

}  // namespace

RunWindow* load_window(const std::string& program_folder) {
  if (!has_display())
    return nullptr;
  // Never unloaded: the window lives as long as the process.
  void* library = dlopen(find_library(program_folder).c_str(), RTLD_NOW);
  void* entry = library ? dlsym(library, "run_window") : nullptr;
  if (!entry)
    write_stderr(std::string("The window cannot be shown: ") + dlerror());
  return reinterpret_cast<RunWindow*>(entry);
}

void restart_without_display(char** argv) {
  for (const char* variable : display_variables)
    unsetenv(variable);
  execv("/proc/self/exe", argv);
  std::abort();
}
