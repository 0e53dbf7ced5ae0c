// The front end with a window of the system's own controls.
#include "ui/win32/win32_screen.h"

#include "platform/windows/handle.h"
#include "platform/windows/wide_text.h"

namespace {

// Where messages go: what the program was started with, else the console that it was started from.
Handle error_output() {
  const HANDLE given = GetStdHandle(STD_ERROR_HANDLE);
  HANDLE own = INVALID_HANDLE_VALUE;
  if (given && given != INVALID_HANDLE_VALUE &&
      DuplicateHandle(GetCurrentProcess(), given, GetCurrentProcess(), &own, 0, FALSE,
                      DUPLICATE_SAME_ACCESS))
    return Handle(own);
  AttachConsole(ATTACH_PARENT_PROCESS);
  return open_file(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING, 0);
}

}  // namespace

bool Win32Screen::open(Form1& form) {
  window = std::make_unique<MainWindow>(form);
  return window->handle() != nullptr;
}

void Win32Screen::run() {
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0)
    window->dispatch(message);
  Win32Screen::end(static_cast<int>(message.wParam));
}

void Win32Screen::show() {
  window->show();
  process_messages();
}

void Win32Screen::show_caption(const std::string& caption) {
  SetWindowTextW(window->handle(), widen(caption).c_str());
}

void Win32Screen::message_box(const std::string& text) {
  MessageBoxW(window ? window->handle() : nullptr, widen(text).c_str(),
              widen(program_title).c_str(), MB_OK);
}

void Win32Screen::print_error(const std::string& text) {
  const Handle output = error_output();
  const std::wstring line = widen(text + "\r\n");
  DWORD mode = 0;
  if (GetConsoleMode(output.get(), &mode))
    WriteConsoleW(output.get(), line.data(), static_cast<DWORD>(line.size()), &mode, nullptr);
  else if (output)
    static_cast<void>(write_all(output, narrow(line)));
}

void Win32Screen::process_messages() {
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
    window->dispatch(message);
}

void Win32Screen::end(int status) { ExitProcess(static_cast<UINT>(status)); }
