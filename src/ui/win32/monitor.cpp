// The monitor that a window is on.
#include "ui/win32/monitor.h"

#include "platform/windows/system_library.h"

namespace {

// By the function of Windows 8.1 and the first releases of 10; 0 where it is missing.
UINT monitor_dpi(HWND window) {
  using Ask = HRESULT WINAPI(HMONITOR, int, UINT*, UINT*);
  static const auto ask = system_function<Ask>(L"shcore.dll", "GetDpiForMonitor");
  constexpr int effective = 0;
  UINT across = 0;
  UINT down = 0;
  if (ask)
    ask(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), effective, &across, &down);
  return across;
}

// Older systems have one value for all monitors.
UINT system_dpi() {
  const HDC screen = GetDC(nullptr);
  const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
  ReleaseDC(nullptr, screen);
  return static_cast<UINT>(dpi);
}

}  // namespace

UINT dpi_of(HWND window) {
  static const auto ask = system_function<UINT WINAPI(HWND)>(L"user32.dll", "GetDpiForWindow");
  if (ask)
    return ask(window);
  const UINT dpi = monitor_dpi(window);
  return dpi ? dpi : system_dpi();
}

RECT work_area(HWND window) {
  MONITORINFO monitor{};
  monitor.cbSize = sizeof monitor;
  GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &monitor);
  return monitor.rcWork;
}

SIZE framed_size(HWND window, SIZE client) {
  static const auto ask = system_function<BOOL WINAPI(RECT*, DWORD, BOOL, DWORD, UINT)>(
      L"user32.dll", "AdjustWindowRectExForDpi");
  const auto style = static_cast<DWORD>(GetWindowLongPtrW(window, GWL_STYLE));
  const auto extended = static_cast<DWORD>(GetWindowLongPtrW(window, GWL_EXSTYLE));
  RECT frame{0, 0, client.cx, client.cy};
  if (ask)
    ask(&frame, style, FALSE, extended, dpi_of(window));
  else
    AdjustWindowRectEx(&frame, style, FALSE, extended);
  return {frame.right - frame.left, frame.bottom - frame.top};
}
