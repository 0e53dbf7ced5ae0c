// What a program without a window has from its machine: its arguments, standard output and stderr.
#include "platform/console.h"

#include "platform/windows/handle.h"
#include "platform/windows/wide_text.h"

#include <shellapi.h>

namespace {

// The console takes wide characters, a file or a pipe takes bytes.
bool write(DWORD standard_handle, std::string_view text) {
  HANDLE output = INVALID_HANDLE_VALUE;
  DWORD mode = 0;
  if (!DuplicateHandle(GetCurrentProcess(), GetStdHandle(standard_handle), GetCurrentProcess(),
                       &output, 0, FALSE, DUPLICATE_SAME_ACCESS))
    return false;
  const Handle own(output);
  if (!GetConsoleMode(output, &mode))
    return write_all(own, text);
  const std::wstring wide = widen(text);
  return WriteConsoleW(output, wide.data(), static_cast<DWORD>(wide.size()), &mode, nullptr) != 0;
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

bool print(std::string_view text) { return write(STD_OUTPUT_HANDLE, text); }
void print_error(std::string_view text) { write(STD_ERROR_HANDLE, text); }

bool output_has_colours() {
  constexpr DWORD colours = 0x0004;  // ENABLE_VIRTUAL_TERMINAL_PROCESSING, of Windows 10
  const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  DWORD mode = 0;
  return GetConsoleMode(output, &mode) && SetConsoleMode(output, mode | colours);
}
