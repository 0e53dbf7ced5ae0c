// Keeps Enter and Space from pressing what the user has not seen yet, in the window and in its
// message boxes.
#include "ui/win32/key_guard.h"

#include <string_view>

#include <windows.h>

namespace {

DWORD rest_end = 0;  // in milliseconds since the system's start, modulo 2^32

bool is_text_box(HWND window) {
  wchar_t type[8] = L"";
  GetClassNameW(window, type, 8);
  return std::wstring_view(type) == L"Edit";
}

bool presses_too_early(const MSG& message) {
  constexpr LPARAM was_down = 1 << 30;
  const bool resting = static_cast<LONG>(message.time - rest_end) < 0;
  return message.message == WM_KEYDOWN &&
         (message.wParam == VK_RETURN || message.wParam == VK_SPACE) &&
         (resting || message.lParam & was_down) && !is_text_box(message.hwnd);
}

LRESULT CALLBACK drop_key(int code, WPARAM removed, LPARAM detail) {
  auto& message = *reinterpret_cast<MSG*>(detail);
  if (code == HC_ACTION && presses_too_early(message))
    message.message = WM_NULL;
  return CallNextHookEx(nullptr, code, removed, detail);
}

}  // namespace

void guard_keys() {
  rest_end = GetTickCount();
  SetWindowsHookExW(WH_GETMESSAGE, drop_key, nullptr, GetCurrentThreadId());
}

void pause_keys() { rest_end = GetTickCount() + GetDoubleClickTime(); }
