// The form in a window of the system: a control for each row of the layout, at its place.
#include "ui/win32/main_window.h"

#include "platform/windows/wide_text.h"
#include "ui/handlers.h"
#include "ui/layout.h"
#include "ui/win32/dpi.h"

#include <algorithm>

#include <commctrl.h>

namespace {

constexpr WORD icon = 1;  // the program's, among its resources

HINSTANCE program() { return GetModuleHandleW(nullptr); }

void register_class(WNDPROC procedure) {
  WNDCLASSEXW windows{};
  windows.cbSize = sizeof windows;
  windows.lpfnWndProc = procedure;
  windows.hInstance = program();
  windows.hIcon = LoadIconW(program(), MAKEINTRESOURCEW(icon));
  windows.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));  // IDC_ARROW
  windows.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
  windows.lpszClassName = window_class;
  RegisterClassExW(&windows);
}

Control& control_of(const ControlLayout& row, Form1& form) {
  return **std::find_if(form.controls().begin(), form.controls().end(),
                        [&](const Control* control) { return control->name() == row.name; });
}

SIZE design_size(UINT dpi) { return {pixels(window_width, dpi), pixels(window_height, dpi)}; }

TOOLINFOW tool_of(const Mirror& mirror, std::wstring& text) {
  TOOLINFOW tool{};
  tool.cbSize = sizeof tool;
  tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
  tool.hwnd = GetParent(mirror.window);
  tool.uId = reinterpret_cast<UINT_PTR>(mirror.window);
  tool.lpszText = text.data();
  return tool;
}

constexpr int button_frame = 90;  // twips that a button's frame takes of its width

RECT work_area(HWND window) {
  MONITORINFO monitor{};
  monitor.cbSize = sizeof monitor;
  GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &monitor);
  return monitor.rcWork;
}

// Room for what a drop-down list drops, in rows' heights.
constexpr int dropped_rows = 12;

}  // namespace

MainWindow::MainWindow(Form1& form_in) : form(form_in) {
  register_class(procedure);
  window =
      CreateWindowExW(WS_EX_CONTROLPARENT, window_class, L"", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN,
                      CW_USEDEFAULT, CW_USEDEFAULT, 0, 0, nullptr, nullptr, program(), this);
  if (!window)
    return;
  dpi = dpi_of(window);
  make_tooltips();
  make_fonts();
  move_into_view();
}

bool MainWindow::make_controls() {
  int identifier = first_control_id;
  for (const ControlLayout& row : layout()) {
    const HWND made = make_control(row, window, identifier++);
    if (!made)
      return false;
    mirrors.push_back({&row, &control_of(row, form), made, nullptr, nullptr});
  }
  return true;
}

void MainWindow::make_tooltips() {
  tooltips = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr,
                             WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, 0, 0, 0, 0, window, nullptr,
                             program(), nullptr);
  std::wstring none;
  for (const Mirror& mirror : mirrors) {
    const TOOLINFOW tool = tool_of(mirror, none);
    SendMessageW(tooltips, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
  }
}

void MainWindow::set_tooltip(const Mirror& mirror) {
  std::wstring text = widen(mirror.control->tooltip());
  const TOOLINFOW tool = tool_of(mirror, text);
  SendMessageW(tooltips, TTM_UPDATETIPTEXTW, 0, reinterpret_cast<LPARAM>(&tool));
}

void MainWindow::make_fonts() {
  for (Mirror& mirror : mirrors) {
    FontHandle font = make_font(mirror.row->font, dpi);
    SendMessageW(mirror.window, WM_SETFONT, reinterpret_cast<WPARAM>(font.get()), TRUE);
    mirror.font = std::move(font);
    fit(mirror);
  }
}

// Gives a caption the font of the layout, or where that is too wide one that fits.
void MainWindow::fit(Mirror& mirror) {
  const ControlLayout& row = *mirror.row;
  if (row.kind != Kind::button && row.kind != Kind::label)
    return;
  const std::wstring caption = widen(mirror.control->text());
  const Room room = room_for(row);
  FontHandle fitting;
  if (!fits(mirror.font.get(), caption, room))
    fitting = make_fitting_font(row.font, dpi, caption, room);
  const HFONT font = fitting ? fitting.get() : mirror.font.get();
  if (font != font_of(mirror.window))
    SendMessageW(mirror.window, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
  mirror.fitting = std::move(fitting);
  if (row.sized_to_text)
    place_control(mirror, client_size());
}

Room MainWindow::room_for(const ControlLayout& row) const {
  if (row.sized_to_text)
    return {pixels(room_of(row, form), dpi), 0, false};
  if (row.kind == Kind::button)
    return {pixels(row.width - button_frame, dpi), 0, false};
  return {pixels(row.width, dpi), pixels(row.height, dpi), true};
}

// That of the design, or less on a small screen.
SIZE MainWindow::min_size() const {
  const SIZE design = framed_size(window, design_size(dpi));
  const RECT work = work_area(window);
  return {std::min(design.cx, work.right - work.left), std::min(design.cy, work.bottom - work.top)};
}

// The system places windows of which it does not know the size yet.
void MainWindow::move_into_view() {
  const SIZE size = min_size();
  const RECT work = work_area(window);
  RECT at;
  GetWindowRect(window, &at);
  SetWindowPos(window, nullptr, std::max(work.left, std::min(at.left, work.right - size.cx)),
               std::max(work.top, std::min(at.top, work.bottom - size.cy)), size.cx, size.cy,
               SWP_NOZORDER | SWP_NOACTIVATE);
}

SIZE MainWindow::client_size() const {
  RECT client;
  GetClientRect(window, &client);
  return {client.right, client.bottom};
}

void MainWindow::place() {
  for (const Mirror& mirror : mirrors)
    place_control(mirror, client_size());
}

void MainWindow::place_control(const Mirror& mirror, SIZE client) const {
  const auto twips = [&](LONG length) {
    return MulDiv(static_cast<int>(length), twips_per_inch, static_cast<int>(dpi));
  };
  const Place at = place_of(*mirror.row, twips(client.cx), twips(client.cy));
  const int left = pixels(at.left, dpi);
  const int top = pixels(at.top, dpi);
  int width = pixels(at.left + at.width, dpi) - left;
  int height = pixels(at.top + at.height, dpi) - top;
  if (mirror.row->kind == Kind::drive_list)
    height *= dropped_rows;
  if (mirror.row->sized_to_text)
    width = text_width(font_of(mirror.window), widen(mirror.control->text()));
  SetWindowPos(mirror.window, nullptr, left, top, width, height,
               SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOCOPYBITS);
}

void MainWindow::limit_size(MINMAXINFO& limits) const {
  const SIZE least = min_size();
  limits.ptMinTrackSize = {least.cx, least.cy};
}

void MainWindow::change_dpi(UINT new_dpi, const RECT& suggested) {
  dpi = new_dpi;
  make_fonts();
  SetWindowPos(window, nullptr, suggested.left, suggested.top, suggested.right - suggested.left,
               suggested.bottom - suggested.top, SWP_NOZORDER | SWP_NOACTIVATE);
  place();
}

void MainWindow::show() {
  focused = mirrors.front().window;
  ShowWindow(window, SW_SHOWDEFAULT);
  UpdateWindow(window);
}

const Mirror* MainWindow::mirror_of(HWND control) const {
  const auto found = std::find_if(mirrors.begin(), mirrors.end(),
                                  [&](const Mirror& mirror) { return mirror.window == control; });
  return found == mirrors.end() ? nullptr : &*found;
}

Mirror& MainWindow::mirror_of(const Control& control) {
  return *std::find_if(mirrors.begin(), mirrors.end(),
                       [&](const Mirror& mirror) { return mirror.control == &control; });
}

void MainWindow::refresh(const Control& control) {
  Mirror& mirror = mirror_of(control);
  const bool before = IsWindowVisible(mirror.window);
  own = true;
  show_control(mirror, form);
  own = false;
  set_tooltip(mirror);
  fit(mirror);
  EnableWindow(mirror.window, control.enabled());
  ShowWindow(mirror.window, control.visible() ? SW_SHOWNA : SW_HIDE);
  if (!before && IsWindowVisible(mirror.window))
    make_room();
}

// What appears takes room from the labels beside it.
void MainWindow::make_room() {
  for (Mirror& mirror : mirrors)
    if (mirror.row->sized_to_text)
      fit(mirror);
  // At once: the work of a silent run may follow, which does not yield.
  RedrawWindow(window, nullptr, nullptr,
               RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
}

void MainWindow::append(const Control& control, std::string_view text) {
  own = true;
  append_text(mirror_of(control).window, text);
  own = false;
}

void MainWindow::dispatch(MSG& message) const {
  if (IsDialogMessageW(window, &message))
    return;
  TranslateMessage(&message);
  DispatchMessageW(&message);
}

// The dialog keys give Enter the identifier of a dialog's OK button.
void MainWindow::command(WORD identifier, WORD code) {
  const Mirror* mirror =
      mirror_of(identifier == IDOK ? GetFocus() : GetDlgItem(window, identifier));
  if (!mirror || own)
    return;
  if (identifier == IDOK)
    entered(*mirror, form);
  else
    notified(*mirror, form, code);
  leave_disabled_control(*mirror);
}

// A button that has disabled itself has lost the keyboard.
void MainWindow::leave_disabled_control(const Mirror& mirror) {
  if (IsWindowEnabled(mirror.window) || (GetFocus() && GetFocus() != mirror.window))
    return;
  focused = mirror_of(focus_after(form)).window;
  keep_focus(GetActiveWindow() == window);
}

void MainWindow::keep_focus(bool active) {
  if (!active && IsChild(window, GetFocus()))
    focused = GetFocus();
  if (active && focused)
    SetFocus(focused);
}

LRESULT CALLBACK MainWindow::procedure(HWND window, UINT message, WPARAM word, LPARAM detail) {
  if (message == WM_NCCREATE) {
    auto* created =
        static_cast<MainWindow*>(reinterpret_cast<CREATESTRUCTW*>(detail)->lpCreateParams);
    created->window = window;
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(created));
  }
  auto* self = reinterpret_cast<MainWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  return self ? self->handle(message, word, detail) : DefWindowProcW(window, message, word, detail);
}

LRESULT MainWindow::handle(UINT message, WPARAM word, LPARAM detail) {
  switch (message) {
  case WM_CREATE:
    return make_controls() ? 0 : -1;  // -1: there is to be no window
  case WM_COMMAND:
    command(LOWORD(word), HIWORD(word));
    return 0;
  case WM_SIZE:
    place();
    return 0;
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
    end_program(form);
  default:
    return DefWindowProcW(window, message, word, detail);
  }
}
