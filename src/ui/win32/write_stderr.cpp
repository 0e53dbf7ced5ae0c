// Messages on stderr, which a program with a window has only when it was redirected; else on the
// console that it was started from.
#include "ui/write_stderr.h"

#include "platform/windows/handle.h"
#include "platform/windows/wide_text.h"

namespace {

// None when there is neither.
Handle error_output() {
  const HANDLE redirected = GetStdHandle(STD_ERROR_HANDLE);
  HANDLE own = INVALID_HANDLE_VALUE;
  if (redirected && redirected != INVALID_HANDLE_VALUE &&
      DuplicateHandle(GetCurrentProcess(), redirected, GetCurrentProcess(), &own, 0, FALSE,
                      DUPLICATE_SAME_ACCESS))
    return Handle(own);
  AttachConsole(ATTACH_PARENT_PROCESS);
  return open_file(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING, 0);
}

}  // namespace

void write_stderr(std::string_view text) {
  const Handle output = error_output();
  const std::wstring line = widen(text) + L"\r\n";
  DWORD mode = 0;
  if (GetConsoleMode(output.get(), &mode))
    WriteConsoleW(output.get(), line.data(), static_cast<DWORD>(line.size()), &mode, nullptr);
  else if (output)
    static_cast<void>(write_all(output, narrow(line)));
}
