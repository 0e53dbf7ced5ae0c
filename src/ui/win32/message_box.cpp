// A message with an OK button.
#include "ui/win32/message_box.h"

#include "platform/windows/wide_text.h"
#include "ui/layout.h"
#include "ui/win32/controls.h"
#include "ui/win32/font.h"
#include "ui/win32/monitor.h"

namespace {

constexpr Font message_font{"Segoe UI", 9};
constexpr int text_identifier = 100;

// A dialog's template without font or controls.
struct EmptyDialog {
  DLGTEMPLATE dialog;
  WORD menu, type, title;
};

// The window of a message. Sizes in its box are multiples of the height of a line.
class MessageDialog {
public:
  explicit MessageDialog(const std::string& text_in) : text(widen(text_in)) {}

  void run(HWND owner) {
    EmptyDialog empty{};
    empty.dialog.style = DS_MODALFRAME | WS_POPUP | WS_CAPTION | WS_SYSMENU;
    DialogBoxIndirectParamW(GetModuleHandleW(nullptr), &empty.dialog, owner, procedure,
                            reinterpret_cast<LPARAM>(this));
  }

private:
  static INT_PTR CALLBACK procedure(HWND window, UINT message, WPARAM word, LPARAM detail) {
    if (message == WM_INITDIALOG) {
      reinterpret_cast<MessageDialog*>(detail)->fill(window);
      return FALSE;  // the button has the focus
    }
    const bool answered =
        message == WM_COMMAND && (LOWORD(word) == IDOK || LOWORD(word) == IDCANCEL);
    if (answered)
      EndDialog(window, IDOK);
    return answered;
  }

  void fill(HWND window) {
    dialog = window;
    SetWindowTextW(dialog, widen(program_title).c_str());
    font = make_font(message_font, static_cast<int>(dpi_of(dialog)));
    const int line = text_size(font.get(), L"X", 0).cy;
    const RECT work = work_area(dialog);
    const SIZE needed = text_size(font.get(), text, message_width * line);
    const Extent field = message_field({needed.cx, needed.cy},
                                       {work.right - work.left, work.bottom - work.top}, line);
    const int gap = line / 2;
    const SIZE button{5 * line, 3 * line / 2};
    place_in_middle(work, {field.width + 2 * gap, field.height + button.cy + 3 * gap});
    add_text({gap, gap, field.width, field.height}, field.height < needed.cy + line);
    add_button({gap + field.width - button.cx, field.height + 2 * gap, button.cx, button.cy});
  }

  void place_in_middle(const RECT& work, SIZE client) const {
    const SIZE size = framed_size(dialog, client);
    SetWindowPos(dialog, nullptr, (work.left + work.right - size.cx) / 2,
                 (work.top + work.bottom - size.cy) / 2, size.cx, size.cy,
                 SWP_NOZORDER | SWP_NOACTIVATE);
  }

  void add_text(const Place& at, bool scrolls) const {
    use_dialog_keys(add(L"EDIT", text, ES_MULTILINE | ES_READONLY | (scrolls ? WS_VSCROLL : 0),
                        WS_EX_CLIENTEDGE, at, text_identifier));
  }

  void add_button(const Place& at) const {
    SetFocus(add(L"BUTTON", L"OK", BS_DEFPUSHBUTTON, 0, at, IDOK));
    SendMessageW(dialog, DM_SETDEFID, IDOK, 0);
  }

  HWND add(const wchar_t* type, const std::wstring& shown, DWORD style, DWORD extended,
           const Place& at, int identifier) const {
    const HWND made = CreateWindowExW(
        extended, type, shown.c_str(), WS_CHILD | WS_VISIBLE | WS_TABSTOP | style, at.left, at.top,
        at.width, at.height, dialog, reinterpret_cast<HMENU>(static_cast<INT_PTR>(identifier)),
        nullptr, nullptr);
    SendMessageW(made, WM_SETFONT, reinterpret_cast<WPARAM>(font.get()), FALSE);
    return made;
  }

  const std::wstring text;
  HWND dialog = nullptr;
  FontHandle font;
};

}  // namespace

void show_message(HWND owner, const std::string& text) { MessageDialog(text).run(owner); }
