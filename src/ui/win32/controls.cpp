// The system's controls that mirror those of the form.
#include "ui/win32/controls.h"

#include "platform/windows/wide_text.h"
#include "ui/handlers.h"

#include <algorithm>

#include <commctrl.h>
#include <oleacc.h>

namespace {

// A control's window class and styles.
struct Style {
  const wchar_t* type;
  DWORD style;
  DWORD extended;
};

// Each control is a group of its own, so that the arrow keys do not leave it.
constexpr DWORD child = WS_CHILD | WS_CLIPSIBLINGS | WS_GROUP;
constexpr DWORD list = child | WS_TABSTOP | WS_VSCROLL;

DWORD alignment(const ControlLayout& row) {
  if (row.sized_to_text)
    return SS_LEFTNOWORDWRAP;
  return row.align == Align::left ? SS_LEFT : row.align == Align::right ? SS_RIGHT : SS_CENTER;
}

Style style_of(const ControlLayout& row) {
  switch (row.kind) {
  case Kind::drive_list:
    return {L"COMBOBOX", list | CBS_DROPDOWNLIST, 0};
  case Kind::file_list:
  case Kind::directory_list:
    return {L"LISTBOX", list | WS_HSCROLL | LBS_NOTIFY | LBS_NOINTEGRALHEIGHT, WS_EX_CLIENTEDGE};
  case Kind::button:
    return {L"BUTTON", child | WS_TABSTOP | BS_PUSHBUTTON, 0};
  case Kind::text_box:
    return {L"EDIT", list | ES_MULTILINE | ES_AUTOVSCROLL | ES_WANTRETURN, WS_EX_CLIENTEDGE};
  case Kind::label:
    break;
  }
  return {L"STATIC", child | SS_NOPREFIX | alignment(row), 0};
}

std::wstring text_of(HWND window) {
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)), L'\0');
  GetWindowTextW(window, text.data(), static_cast<int>(text.size()) + 1);
  return text;
}

// By itself a multi-line box takes Tab, closes the window at Escape, ignores Ctrl+A, and lets a
// dialog select all of its text and scroll to the end when Tab enters it.
LRESULT CALLBACK edit_box_procedure(HWND box, UINT message, WPARAM word, LPARAM detail, UINT_PTR,
                                    DWORD_PTR) {
  constexpr WPARAM control_a = 1;
  if (message == WM_GETDLGCODE) {
    const auto* key = reinterpret_cast<const MSG*>(detail);
    const LRESULT wanted =
        DefSubclassProc(box, message, word, 0) & ~LRESULT{DLGC_WANTALLKEYS | DLGC_HASSETSEL};
    return key && key->wParam == VK_RETURN ? wanted | DLGC_WANTMESSAGE : wanted;
  }
  if (message == WM_CHAR && word == control_a)
    return SendMessageW(box, EM_SETSEL, 0, -1);
  return DefSubclassProc(box, message, word, detail);
}

void fill_rows(const Mirror& mirror, const std::vector<std::wstring>& rows) {
  constexpr int margin = 8;
  const HWND window = mirror.window;
  SendMessageW(window, WM_SETREDRAW, FALSE, 0);
  SendMessageW(window, LB_RESETCONTENT, 0, 0);
  for (const std::wstring& row : rows)
    SendMessageW(window, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row.c_str()));
  int width = 0;
  for (const std::wstring& row : rows)
    width = std::max(width, text_width(mirror.font.get(), row));
  SendMessageW(window, LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(width + margin), 0);
  SendMessageW(window, WM_SETREDRAW, TRUE, 0);
  InvalidateRect(window, nullptr, TRUE);
}

void show_files(const Mirror& mirror, const FileList& files) {
  std::vector<std::wstring> rows;
  for (const std::string& name : files.names())
    rows.push_back(widen(name));
  fill_rows(mirror, rows);
}

// Each folder is indented below its parent; the list's own is selected.
void show_folders(const Mirror& mirror, const DirectoryList& folders) {
  constexpr std::size_t indentation = 3;  // in blanks
  std::vector<std::wstring> rows;
  for (const FolderRow& row : folders.rows())
    rows.push_back(std::wstring(row.depth * indentation, L' ') + widen(row.name));
  fill_rows(mirror, rows);
  if (!rows.empty())
    SendMessageW(mirror.window, LB_SETCURSEL, folders.own_row(), 0);
}

// Adds the drives only once: the list may be dropped down while another one is selected.
void show_drives(HWND window, const DriveList& drives) {
  const std::vector<std::string>& all = drives.drives;
  if (SendMessageW(window, CB_GETCOUNT, 0, 0) == 0)
    for (const std::string& drive : all)
      SendMessageW(window, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(widen(drive).c_str()));
  const auto selected = std::find(all.begin(), all.end(), drives.text());
  SendMessageW(window, CB_SETCURSEL, static_cast<WPARAM>(selected - all.begin()), 0);
}

// Names the control for screen readers, which without a name take its text. Nothing depends on its
// success.
void show_name(const Mirror& mirror, const Form1& form) {
  static IAccPropServices* const service = [] {
    void* made = nullptr;
    CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER, IID_IAccPropServices,
                     &made);
    return static_cast<IAccPropServices*>(made);
  }();
  const std::wstring name = widen(accessible_name(*mirror.row, form));
  if (service && !name.empty())
    service->SetHwndPropStr(mirror.window, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF,
                            PROPID_ACC_NAME, name.c_str());
}

void drive_selected(HWND window, Form1& form) {
  const auto index = static_cast<std::size_t>(SendMessageW(window, CB_GETCURSEL, 0, 0));
  if (index < form.Drive1.drives.size())
    select_drive(form, form.Drive1.drives[index]);
  show_drives(window, form.Drive1);  // the drive may not have been ready, or a search is running
}

void open_selected(HWND window, Form1& form) {
  const auto index = static_cast<std::size_t>(SendMessageW(window, LB_GETCURSEL, 0, 0));
  const std::vector<FolderRow> rows = form.Dir1.rows();
  if (index < rows.size())
    open_folder(form, rows[index].path);
}

}  // namespace

HWND make_control(const ControlLayout& row, HWND parent, int identifier) {
  const Style style = style_of(row);
  const HWND window =
      CreateWindowExW(style.extended, style.type, L"", style.style, 0, 0, 0, 0, parent,
                      reinterpret_cast<HMENU>(static_cast<INT_PTR>(identifier)), nullptr, nullptr);
  if (window && row.kind == Kind::text_box) {
    SendMessageW(window, EM_SETLIMITTEXT, 0, 0);  // 0: no limit but memory
    use_dialog_keys(window);
  }
  return window;
}

void use_dialog_keys(HWND text_box) { SetWindowSubclass(text_box, edit_box_procedure, 0, 0); }

void show_control(const Mirror& mirror, const Form1& form) {
  show_name(mirror, form);
  if (mirror.row->kind == Kind::drive_list)
    return show_drives(mirror.window, form.Drive1);
  if (mirror.row->kind == Kind::directory_list)
    return show_folders(mirror, form.Dir1);
  if (mirror.row->kind == Kind::file_list)
    return show_files(mirror, form.File1);
  const std::wstring text = widen(mirror.control->text());
  if (text_of(mirror.window) != text)
    SetWindowTextW(mirror.window, text.c_str());
}

void set_font(Mirror& mirror, int dpi) {
  FontHandle font = make_font(mirror.row->font, dpi);
  SendMessageW(mirror.window, WM_SETFONT, reinterpret_cast<WPARAM>(font.get()), TRUE);
  mirror.font = std::move(font);
}

void fit_caption(Mirror& mirror, const Form1& form, int client_width, int dpi) {
  const ControlLayout& row = *mirror.row;
  if (!row.has_caption())
    return;
  const std::wstring caption = widen(mirror.control->text());
  const Room room = caption_room(row, form, client_width, dpi);
  FontHandle fitting;
  if (!fits(mirror.font.get(), caption, room))
    fitting = make_fitting_font(row.font, dpi, caption, room);
  const HFONT font = fitting ? fitting.get() : mirror.font.get();
  if (font != font_of(mirror.window))
    SendMessageW(mirror.window, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
  mirror.fitting = std::move(fitting);
}

void place_control(const Mirror& mirror, SIZE client, int dpi) {
  constexpr int dropped_rows = 12;  // the height of a drop-down list includes what it drops
  Place at = place_of(*mirror.row, client.cx, client.cy, dpi);
  if (mirror.row->kind == Kind::drive_list)
    at.height *= dropped_rows;
  if (mirror.row->sized_to_text)
    at.width = text_width(font_of(mirror.window), widen(mirror.control->text()));
  SetWindowPos(mirror.window, nullptr, at.left, at.top, at.width, at.height,
               SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOCOPYBITS);
}

void append_text(HWND box, std::string_view text) {
  const int end = GetWindowTextLengthW(box);
  SendMessageW(box, EM_SETSEL, static_cast<WPARAM>(end), end);
  SendMessageW(box, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(widen(text).c_str()));
}

void handle_notification(const Mirror& mirror, Form1& form, WORD code) {
  if (mirror.row->kind == Kind::button && code == BN_CLICKED)
    press(form, *mirror.control);
  if (mirror.row->kind == Kind::drive_list && code == CBN_SELCHANGE)
    drive_selected(mirror.window, form);
  if (mirror.row->kind == Kind::directory_list && code == LBN_DBLCLK)
    open_selected(mirror.window, form);
  if (mirror.row->kind == Kind::text_box && code == EN_CHANGE)
    mirror.control->store_typed(narrow(text_of(mirror.window)));
}
