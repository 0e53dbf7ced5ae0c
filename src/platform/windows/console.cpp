// The programs' arguments, standard output and stderr.
#include "platform/console.h"

#include "platform/printable.h"
#include "platform/windows/handle.h"
#include "platform/windows/wide_text.h"

#include <shellapi.h>

namespace {

// A handle of our own to standard output or stderr; none when the program has none.
Handle standard_output(DWORD which) {
  const HANDLE given = GetStdHandle(which), process = GetCurrentProcess();
  HANDLE own = nullptr;
  if (given && given != INVALID_HANDLE_VALUE)
    DuplicateHandle(process, given, process, &own, 0, FALSE, DUPLICATE_SAME_ACCESS);
  return Handle(own);
}

// The console takes wide characters, a file or a pipe takes bytes.
bool write(const Handle& output, std::string_view text) {
  DWORD mode = 0;
  if (!GetConsoleMode(output.get(), &mode))
    return write_all(output, text);
  const std::wstring wide = widen(text);
  return WriteConsoleW(output.get(), wide.data(), static_cast<DWORD>(wide.size()), &mode,
                       nullptr) != 0;
}

}  // namespace

std::vector<std::string> command_line(int, char**) {
  int count = 0;
  wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 1; words && i < count; ++i)
    arguments.push_back(narrow(words[i]));
  LocalFree(words);
  return arguments;
}

bool print(std::string_view text) { return write(standard_output(STD_OUTPUT_HANDLE), text); }

void print_error(std::string_view message) {
  Handle output = standard_output(STD_ERROR_HANDLE);
  if (!output) {
    AttachConsole(ATTACH_PARENT_PROCESS);  // fails where an earlier message has attached it
    output = open_file(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING, 0);
  }
  write(output, printable_lines(message) + "\r\n");
}

bool output_has_colours() {
  constexpr DWORD colours = 0x0004;  // ENABLE_VIRTUAL_TERMINAL_PROCESSING, of Windows 10
  const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  DWORD mode = 0;
  return GetConsoleMode(output, &mode) && SetConsoleMode(output, mode | colours);
}
