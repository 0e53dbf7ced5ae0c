// The dots per inch of the monitor that a window is on.
#include "ui/win32/dpi.h"

#include "ui/layout.h"

namespace {

// A function of user32.dll by its name; null where it is not known.
template <class Function> Function userfunction(const char* name) {
  const FARPROC found = GetProcAddress(GetModuleHandleW(L"user32.dll"), name);
  return reinterpret_cast<Function>(reinterpret_cast<void*>(found));
}

// That of all monitors, on a system that does not tell them apart.
UINT systemdpi() {
  const HDC screen = GetDC(nullptr);
  const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
  ReleaseDC(nullptr, screen);
  return static_cast<UINT>(dpi);
}

}  // namespace

UINT dpiof(HWND window) {
  static const auto ask = userfunction<UINT(WINAPI*)(HWND)>("GetDpiForWindow");
  return ask ? ask(window) : systemdpi();
}

SIZE framedsize(HWND window, SIZE client) {
  static const auto ask =
      userfunction<BOOL(WINAPI*)(RECT*, DWORD, BOOL, DWORD, UINT)>("AdjustWindowRectExForDpi");
  const auto style = static_cast<DWORD>(GetWindowLongPtrW(window, GWL_STYLE));
  const auto extended = static_cast<DWORD>(GetWindowLongPtrW(window, GWL_EXSTYLE));
  RECT frame{0, 0, client.cx, client.cy};
  if (ask)
    ask(&frame, style, FALSE, extended, dpiof(window));
  else
    AdjustWindowRectEx(&frame, style, FALSE, extended);
  return {frame.right - frame.left, frame.bottom - frame.top};
}

int pixels(int twips, UINT dpi) { return MulDiv(twips, static_cast<int>(dpi), twipsperinch); }
