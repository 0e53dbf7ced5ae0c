// The front end with a window of the system: a control for each row of the layout, at its place.
#include "ui/win32/main_window.h"

#include "platform/windows/wide_text.h"
#include "ui/handlers.h"
#include "ui/layout.h"
#include "ui/win32/key_guard.h"
#include "ui/win32/message_box.h"
#include "ui/win32/monitor.h"

#include <algorithm>

#include <commctrl.h>

namespace {

constexpr WORD icon = 1;  // in the program's resources

HINSTANCE program() { return GetModuleHandleW(nullptr); }

HCURSOR pointer(bool busy) {
  constexpr WORD arrow = 32512, hourglass = 32514;  // IDC_ARROW, IDC_WAIT
  return LoadCursorW(nullptr, MAKEINTRESOURCEW(busy ? hourglass : arrow));
}

void register_class(WNDPROC procedure) {
  WNDCLASSW windows{};
  windows.lpfnWndProc = procedure;
  windows.hInstance = program();
  windows.hIcon = LoadIconW(program(), MAKEINTRESOURCEW(icon));
  windows.hCursor = pointer(false);
  windows.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
  windows.lpszClassName = window_class;
  RegisterClassW(&windows);
}

}  // namespace

bool MainWindow::open(Form1& new_form) {
  form = &new_form;
  register_class(procedure);
  window =
      CreateWindowExW(WS_EX_CONTROLPARENT, window_class, L"", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN,
                      CW_USEDEFAULT, CW_USEDEFAULT, 0, 0, nullptr, nullptr, program(), nullptr);
  dpi = static_cast<int>(dpi_of(window));
  if (!window || !make_controls())
    return false;
  SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  DisableProcessWindowsGhosting();  // a conversion handles no messages
  guard_keys();
  tooltips = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr,
                             WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, 0, 0, 0, 0, window, nullptr,
                             program(), nullptr);
  move_into_view();
  return true;
}

void MainWindow::run() {
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0)
    dispatch(message);
  MainWindow::end(static_cast<int>(message.wParam));
}

void MainWindow::dispatch(MSG& message) const {
  if (IsDialogMessageW(window, &message))  // the keys that move between controls
    return;
  TranslateMessage(&message);
  DispatchMessageW(&message);
}

bool MainWindow::make_controls() {
  int identifier = first_control_id;
  for (const ControlLayout& row : layout()) {
    const HWND made = make_control(row, window, identifier++);
    if (!made)
      return false;
    mirrors.push_back({&row, &control_of(row, *form), made, nullptr, nullptr});
    set_font(mirrors.back(), dpi);
  }
  return true;
}

void MainWindow::set_tooltip(const Mirror& mirror) const {
  std::wstring text = widen(mirror.control->tooltip());
  TOOLINFOW tool{};
  tool.cbSize = sizeof tool;
  tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
  tool.hwnd = window;
  tool.uId = reinterpret_cast<UINT_PTR>(mirror.window);
  tool.lpszText = text.data();
  SendMessageW(tooltips, TTM_DELTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
  if (!text.empty())
    SendMessageW(tooltips, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
}

SIZE MainWindow::client_size() const {
  RECT client;
  GetClientRect(window, &client);
  return {client.right, client.bottom};
}

// The window's size for a client area given in twips, or less on a small screen.
SIZE MainWindow::size_for(SIZE client) const {
  const SIZE size = framed_size(window, {pixels(client.cx, dpi), pixels(client.cy, dpi)});
  const RECT work = work_area(window);
  return {std::min(size.cx, work.right - work.left), std::min(size.cy, work.bottom - work.top)};
}

// The system has placed the window before it had a size.
void MainWindow::move_into_view() {
  const SIZE size = size_for({window_width, window_height});
  const RECT work = work_area(window);
  RECT at;
  GetWindowRect(window, &at);
  SetWindowPos(window, nullptr, std::max(work.left, std::min(at.left, work.right - size.cx)),
               std::max(work.top, std::min(at.top, work.bottom - size.cy)), size.cx, size.cy,
               SWP_NOZORDER | SWP_NOACTIVATE);
}

void MainWindow::resize_controls() {
  for (Mirror& mirror : mirrors) {
    fit_caption(mirror, *form, client_size().cx, dpi);
    place_control(mirror, client_size(), dpi);
  }
  InvalidateRect(window, nullptr, TRUE);  // also between the controls
}

void MainWindow::limit_size(MINMAXINFO& limits) const {
  const SIZE least = size_for({smallest_width, smallest_height});
  limits.ptMinTrackSize = {least.cx, least.cy};
}

void MainWindow::change_dpi(int new_dpi, const RECT& suggested) {
  dpi = new_dpi;
  for (Mirror& mirror : mirrors)
    set_font(mirror, dpi);
  SetWindowPos(window, nullptr, suggested.left, suggested.top, suggested.right - suggested.left,
               suggested.bottom - suggested.top, SWP_NOZORDER | SWP_NOACTIVATE);
  resize_controls();
}

Mirror& MainWindow::mirror_of(const Control& control) {
  return *std::find_if(mirrors.begin(), mirrors.end(),
                       [&](const Mirror& mirror) { return mirror.control == &control; });
}

void MainWindow::show() {
  focused = mirrors.front().window;
  ShowWindow(window, SW_SHOWDEFAULT);
  UpdateWindow(window);
  handle_pending(PM_QS_PAINT | PM_QS_POSTMESSAGE | PM_QS_SENDMESSAGE);
}

void MainWindow::show_caption(const std::string& caption) {
  SetWindowTextW(window, widen(caption).c_str());
}

void MainWindow::refresh(const Control& control) {
  Mirror& mirror = mirror_of(control);
  const bool was_visible = IsWindowVisible(mirror.window);
  show_control(mirror, *form);
  set_tooltip(mirror);
  fit_caption(mirror, *form, client_size().cx, dpi);
  if (mirror.row->sized_to_text)
    place_control(mirror, client_size(), dpi);
  EnableWindow(mirror.window, control.enabled());
  ShowWindow(mirror.window, control.visible() ? SW_SHOWNA : SW_HIDE);
  if (was_visible || !IsWindowVisible(mirror.window))
    return;
  resize_controls();  // it takes room from the labels beside it
  // At once: a silent run may follow, which does not yield.
  RedrawWindow(window, nullptr, nullptr,
               RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
}

void MainWindow::append(const Control& control, std::string_view text) {
  appending = true;
  append_text(mirror_of(control).window, text);
  appending = false;
}

void MainWindow::message_box(const std::string& text) {
  pause_keys();
  show_message(window, text);
}

void MainWindow::show_busy(bool on) {
  busy = on;
  SetCursor(pointer(busy));
}

void MainWindow::process_messages() { handle_pending(0); }

// `kinds`: the PM_QS_ flags of the messages to handle; 0 for all.
void MainWindow::handle_pending(UINT kinds) const {
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE | kinds))
    dispatch(message);
}

void MainWindow::end(int status) { ExitProcess(static_cast<UINT>(status)); }

// Enter comes as the identifier of a dialog's OK button, whatever has the focus.
void MainWindow::command(WORD identifier, WORD code) {
  const int control = identifier == IDOK ? GetDlgCtrlID(GetFocus()) : identifier;
  const auto index = static_cast<std::size_t>(control - first_control_id);
  if (index >= mirrors.size() || appending)
    return;
  const Mirror& mirror = mirrors[index];
  if (identifier == IDOK)  // Enter does what a click does, and in a list a double click
    code = mirror.row->kind == Kind::button ? BN_CLICKED : LBN_DBLCLK;
  handle_notification(mirror, *form, code);
  leave_disabled_control(mirror);
}

// A button that has disabled itself cannot keep the focus.
void MainWindow::leave_disabled_control(const Mirror& mirror) {
  if (IsWindowEnabled(mirror.window) || (GetFocus() && GetFocus() != mirror.window))
    return;
  pause_keys();
  focused = mirror_of(focus_after(*form)).window;
  keep_focus(GetActiveWindow() == window);
}

void MainWindow::keep_focus(bool active) {
  if (!active && IsChild(window, GetFocus()))
    focused = GetFocus();
  if (active && focused)
    SetFocus(focused);
}

LRESULT CALLBACK MainWindow::procedure(HWND window, UINT message, WPARAM word, LPARAM detail) {
  auto* self = reinterpret_cast<MainWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  return self ? self->handle(message, word, detail) : DefWindowProcW(window, message, word, detail);
}

LRESULT MainWindow::handle(UINT message, WPARAM word, LPARAM detail) {
  switch (message) {
  case WM_COMMAND:
    command(LOWORD(word), HIWORD(word));
    return 0;
  case WM_SIZE:
    resize_controls();
    return 0;
  case WM_SETCURSOR:
    if (!busy || LOWORD(detail) != HTCLIENT)
      return DefWindowProcW(window, message, word, detail);
    SetCursor(pointer(busy));
    return TRUE;  // also for the control under the pointer
  case WM_GETMINMAXINFO:
    limit_size(*reinterpret_cast<MINMAXINFO*>(detail));
    return 0;
  case 0x02E0:  // WM_DPICHANGED
    change_dpi(LOWORD(word), *reinterpret_cast<const RECT*>(detail));
    return 0;
  case WM_ACTIVATE:
    keep_focus(LOWORD(word) != WA_INACTIVE);
    return 0;
  case WM_CLOSE:
    close_window(*form);
  default:
    return DefWindowProcW(window, message, word, detail);
  }
}
