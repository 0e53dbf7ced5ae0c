// Loads the window, which is a library of its own: the program itself needs nothing of it.
#include "ui/qt/loadwindow.h"

#include "ui/standarderror.h"

#include <cstdlib>
#include <filesystem>

#include <dlfcn.h>
#include <unistd.h>

namespace {

constexpr const char* displayvariables[] = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};

bool hasdisplay() {
  for (const char* variable : displayvariables)
    if (const char* value = std::getenv(variable); value && *value)
      return true;
  return false;
}

std::string findlibrary(const std::string& programfolder) {
  const std::string beside = programfolder + "/" + WINDOWLIBRARY;
  return std::filesystem::exists(beside)
             ? beside
             : programfolder + "/" + LIBRARYFOLDER + "/" + WINDOWLIBRARY;
}

}  // namespace

RunWindow* loadwindow(const std::string& programfolder) {
  if (!hasdisplay())
    return nullptr;
  // Never unloaded: the window lives as long as the process.
  void* library = dlopen(findlibrary(programfolder).c_str(), RTLD_NOW);
  void* entry = library ? dlsym(library, "runwindow") : nullptr;
  if (!entry)
    writestandarderror(std::string("The window cannot be shown: ") + dlerror());
  return reinterpret_cast<RunWindow*>(entry);
}

void restartwithoutdisplay(char** argv) {
  for (const char* variable : displayvariables)
    unsetenv(variable);
  execv("/proc/self/exe", argv);
  std::abort();
}
