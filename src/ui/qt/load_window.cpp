// Loads the window. It is a library of its own, so that the program itself needs no Qt.
#include "ui/qt/load_window.h"

#include "platform/console.h"
#include "platform/prefix/machine.h"
#include "platform/prefix/process.h"

#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

constexpr const char* display_variables[] = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};

// The library's path, beside the program or in an installation; empty, with a message on stderr,
// when it is missing.
fs::path find_library(const fs::path& program_folder) {
  std::error_code unreadable;  // counts as missing
  if (fs::exists(program_folder / WINDOWLIBRARY, unreadable))
    return program_folder / WINDOWLIBRARY;
  std::string places;
  for (const fs::path& folder : installations(program_folder)) {
    fs::path library = folder / LIBRARYFOLDER / WINDOWLIBRARY;
    if (fs::exists(library, unreadable))
      return library;
    places += (places.empty() ? "" : ", ") + folder.string();
  }
  print_error("The window cannot be shown: no " WINDOWLIBRARY " in " + program_folder.string() +
              ", nor in " LIBRARYFOLDER " below " + places);
  return {};
}

// The variables that name a display, with their values.
std::string named_displays() {
  std::string names;
  for (const char* variable : display_variables)
    if (const char* value = std::getenv(variable); value && *value)
      names += (names.empty() ? "" : ", ") + std::string(variable) + "=" + value;
  return names;
}

}  // namespace

RunWindow* load_window(const std::string& program_folder) {
  if (named_displays().empty())
    return nullptr;
  const fs::path path = find_library(program_folder);
  if (path.empty())
    return nullptr;
  const auto entry = load_symbol(path.string(), WINDOWENTRY);
  if (!entry)
    print_error("The window cannot be shown: " + entry.failure().reason);
  return entry ? reinterpret_cast<RunWindow*>(*entry) : nullptr;
}

void restart_without_display(char** argv, const std::string& reasons) {
  print_error("The window cannot be shown (" + named_displays() + ")." + reasons);
  restart_without(display_variables, argv);
}
