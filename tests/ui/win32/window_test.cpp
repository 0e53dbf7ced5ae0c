// The program itself: starts it, works its window by the messages of its controls and reads what
// they show.
#include "platform/windows/handle.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_system.h"
#include "tests/support/test_machine.h"
#include "tests/support/windows/folders.h"
#include "ui/handlers.h"
#include "ui/layout.h"
#include "ui/win32/main_window.h"
#include "ui/win32/monitor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <set>

namespace fs = std::filesystem;

namespace {

using Names = std::vector<std::string>;

constexpr DWORD limit_ms = 120000;                        // of whatever a test waits for
constexpr wchar_t dpi_key[] = L"Control Panel\\Desktop";  // of the programs that are started
constexpr wchar_t dpi_name[] = L"LogPixels";

bool wait_for(const std::function<bool()>& ready) {
  for (const ULONGLONG start = GetTickCount64(); GetTickCount64() - start < limit_ms; Sleep(20))
    if (ready())
      return true;
  return false;
}

std::string text_of(HWND window) {
  std::wstring text(static_cast<std::size_t>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0)) + 1, 0);
  text.resize(static_cast<std::size_t>(
      SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
  return narrow(text);
}

HWND text_box_of(HWND message_box) { return FindWindowExW(message_box, nullptr, L"Edit", nullptr); }

// A machine with the base edition and three old maps. On Windows 7 both search roots are the user's
// folder, so that every map is found twice.
struct GameMachine : TestMachine {
  GameMachine() {
    SetEnvironmentVariableW(L"PROCESSOR_ARCHITECTURE", L"AMD64");
    data = drive_c / "data";
    write_data();
    install("vora", {1, 2, 3, 4});
    for (const wchar_t* name : {L"b.galaxy", L"Große Leere.galaxy", L"sub/c.galaxy"})
      write_file(user_folder / name, old_map);
  }

  void set_release(const VersionParts& release) const {
    write_file(drive_c / "Games/vora/Vorakai.exe", Executable{release}.bytes());
  }

  // What "WScript.Shell" stands for.
  void set_script_host(const char* identifier) {
    set_registry("SOFTWARE\\Classes\\WScript.Shell\\CLSID", "", identifier);
  }
};

// A system that looks at the pointer in the middle of a search or conversion.
class WatchingSystem : public WindowsSystem {
public:
  WatchingSystem() : WindowsSystem(nullptr) {}

  std::string argument_text() override { return ""; }
  void defer_interrupts(bool on) override { working = on; }
  bool interrupted() override {
    if (working)
      pointers.insert(pointer());
    return false;
  }

  // The pointer once it has moved over the window.
  HCURSOR pointer() const {
    SendMessageW(window, WM_SETCURSOR, reinterpret_cast<WPARAM>(window),
                 MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
    return GetCursor();
  }

  HWND window = nullptr;
  bool working = false;
  std::set<HCURSOR> pointers;  // that were seen meanwhile
};

class ProgramWindow : public testing::Test {
protected:
  ~ProgramWindow() override {
    kill();
    RegDeleteKeyValueW(HKEY_CURRENT_USER, dpi_key, dpi_name);
  }

  // Starts the program; its stderr is the file `stderr` in the data folder.
  void start(const std::wstring& arguments = L"") {
    kill();
    std::wstring line = L"\"" + fs::path(PROGRAM).wstring() + L"\"" + arguments;
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const Handle output(CreateFileW((machine.data / "stderr").c_str(), GENERIC_WRITE,
                                    FILE_SHARE_READ, &inherited, CREATE_ALWAYS, 0, nullptr));
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdError = output.get();
    ASSERT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                               machine.data.c_str(), &startup, &process));
  }

  void open() {
    start();
    ASSERT_TRUE(wait_for([&] {
      window = FindWindowW(window_class, nullptr);
      return window && IsWindowVisible(window) && !enabled("Command2");
    }));
    SetForegroundWindow(window);
  }

  // Waits for a message box; null when none appears.
  HWND message_box() const {
    HWND box = nullptr;
    return wait_for([&] {
      box = FindWindowW(L"#32770", widen(program_title).c_str());
      return box && IsWindowVisible(box);
    })
               ? box
               : nullptr;
  }

  // Closes the next message box; returns its text.
  std::string answer() const {
    const HWND box = message_box();
    if (!box)
      return "no box";
    const std::string message = text_of(text_box_of(box));
    SendMessageW(GetDlgItem(box, IDOK), BM_CLICK, 0, 0);
    return message;
  }

  void kill() {
    if (!process.hProcess)
      return;
    TerminateProcess(process.hProcess, 99);
    exit_status();
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    process = {};
  }

  DWORD exit_status() const {
    EXPECT_EQ(WaitForSingleObject(process.hProcess, limit_ms), WAIT_OBJECT_0);
    DWORD status = 0;
    GetExitCodeProcess(process.hProcess, &status);
    return status;
  }

  HWND control(const std::string& name) const {
    const auto row = std::ranges::find(layout(), name, &ControlLayout::name);
    return GetDlgItem(window, first_control_id + static_cast<int>(row - layout().begin()));
  }

  LRESULT send(const std::string& name, UINT message, WPARAM word = 0, LPARAM detail = 0) const {
    return SendMessageW(control(name), message, word, detail);
  }

  void click(const std::string& button) const { send(button, BM_CLICK); }

  std::string text(const std::string& name) const { return text_of(control(name)); }

  // The message returns when the program has finished what it is doing.
  bool enabled(const std::string& name) const {
    send(name, WM_NULL);
    return IsWindowEnabled(control(name));
  }

  // Whether Command1 to Command7 are enabled, a digit each, then the stage counter.
  std::string state() const {
    std::string digits;
    for (int i = 1; i <= 7; ++i)
      digits += enabled("Command" + std::to_string(i)) ? "1" : "0";
    return digits + " " + text("Label8");
  }

  // What a list holds, without indentation.
  Names rows(const std::string& list) const {
    Names result;
    for (LRESULT i = 0; i < send(list, LB_GETCOUNT); ++i) {
      wchar_t row[300];
      send(list, LB_GETTEXT, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(row));
      const std::string shown = narrow(row);
      result.push_back(shown.substr(shown.find_first_not_of(' ')));
    }
    return result;
  }

  // Selects a row of a list and notifies the window, as the list does when the user selects it.
  void select(const std::string& list, UINT message, LRESULT row, WORD code) const {
    send(list, message, static_cast<WPARAM>(row));
    SendMessageW(window, WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(control(list)), code),
                 reinterpret_cast<LPARAM>(control(list)));
  }

  bool gets_focus(const std::string& name) const {
    return wait_for([&] { return focus() == control(name); });
  }

  HWND focus() const {
    GUITHREADINFO information{};
    information.cbSize = sizeof information;
    GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &information);
    return information.hwndFocus;
  }

  void press_key(WPARAM code) const { PostMessageW(focus(), WM_KEYDOWN, code, 0); }

  // The key has been down for a while: it repeats.
  void hold_key(WPARAM code) const { PostMessageW(focus(), WM_KEYDOWN, code, 1 << 30); }

  static RECT place(HWND shown) {
    RECT rect;
    GetWindowRect(shown, &rect);
    return rect;
  }
  RECT place(const std::string& name) const { return place(control(name)); }

  GameMachine machine;
  PROCESS_INFORMATION process{};
  HWND window = nullptr;
};

}  // namespace

TEST_F(ProgramWindow, WaitsForTheUserAndFollowsTabAsTheLayoutSays) {
  open();
  EXPECT_EQ(text_of(window), window_caption);
  for (const ControlLayout& row : layout())
    EXPECT_EQ(IsWindowVisible(control(row.name)) != 0, row.visible) << row.name;
  EXPECT_EQ(state(), "1011110 0");
  EXPECT_EQ(text("Command6"), "vora/zendrel");
  EXPECT_EQ(text("Drive1"), "C:");
  EXPECT_EQ(text("Label11"), "AMD64 type");
  EXPECT_LE(place("Label11").right, place("Label17").left);
  EXPECT_GT(send("Text1", EM_GETLIMITTEXT), 10'000'000);  // 30,000 by default

  Names stops;
  for (const ControlLayout& row : layout())
    if (row.kind != Kind::label && enabled(row.name))
      stops.push_back(row.name);
  stops.push_back(stops.front());
  for (const std::string& stop : stops) {
    ASSERT_TRUE(gets_focus(stop)) << stop;
    press_key(VK_TAB);
  }
  PostMessageW(window, WM_CLOSE, 0, 0);
  EXPECT_EQ(exit_status(), 0u);
}

TEST_F(ProgramWindow, FindsAndFixesByKeyboard) {
  open();
  send("Text1", WM_CHAR, 'x');
  click("Command1");
  EXPECT_EQ(state(), "0111110 1");
  const std::string found = "c.galaxy\r\nb.galaxy\r\nGroße Leere.galaxy\r\n";
  EXPECT_EQ(text("Text1"), "x" + found + found);
  EXPECT_EQ(text("Label6"), "5");

  EXPECT_TRUE(gets_focus("Command2"));
  Sleep(2 * GetDoubleClickTime());
  press_key(VK_RETURN);
  EXPECT_TRUE(wait_for([&] { return state() == "1011110 2"; })) << state();
  EXPECT_TRUE(text("Text2").starts_with(found)) << text("Text2");
  EXPECT_EQ(read_file(machine.user_folder / "b.galaxy"), converted_map);
  EXPECT_EQ(read_file(machine.user_folder / "b.galold"), old_map);

  EXPECT_TRUE(gets_focus("Command1"));
  click("Command3");
  EXPECT_EQ(exit_status(), 0u);
}

TEST_F(ProgramWindow, ItsListsFollowOneAnother) {
  open();
  click("Command5");
  const Names folders = rows("Dir1");
  const LRESULT selected = send("Dir1", LB_GETCURSEL);
  ASSERT_EQ(static_cast<std::size_t>(selected) + 2, folders.size());
  EXPECT_EQ(folders.front(), "C:\\");
  EXPECT_EQ(folders[folders.size() - 2], "Vorakai");
  EXPECT_EQ(rows("File1"), (Names{"b.galaxy", "Große Leere.galaxy"}));

  select("Dir1", LB_SETCURSEL, selected + 1, LBN_DBLCLK);
  EXPECT_EQ(rows("File1"), Names{"c.galaxy"});
  select("Drive1", CB_SETCURSEL, send("Drive1", CB_GETCOUNT) - 1, CBN_SELCHANGE);
  EXPECT_EQ(text("Drive1"), "Z:");
  EXPECT_EQ(rows("Dir1").front(), "Z:\\");
  EXPECT_TRUE(rows("File1").empty());
}

// A movement that comes before start-up has ended is dropped, so the pointer keeps moving.
TEST_F(ProgramWindow, AToolTipShowsTheFolderOfAButton) {
  open();
  const RECT button = place("Command5");
  HWND tip = nullptr;
  EXPECT_TRUE(wait_for([&, polls = 0]() mutable {
    if (polls % 100 == 0)
      SetCursorPos(button.left + 10 + polls / 100 % 2, (button.top + button.bottom) / 2);
    ++polls;
    tip = FindWindowW(L"tooltips_class32", nullptr);
    return IsWindowVisible(tip) != 0;
  }));
  EXPECT_EQ(text_of(tip), narrow((machine.user_folder / "").make_preferred().wstring()));
}

TEST_F(ProgramWindow, KeysInATextBoxWriteOrLeaveIt) {
  open();
  send("Text1", WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
  send("Text1", WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
  ASSERT_TRUE(gets_focus("Text1"));
  press_key('A');
  press_key(VK_RETURN);
  EXPECT_TRUE(wait_for([&] { return text("Text1") == "a\r\n"; })) << text("Text1");
  press_key(VK_ESCAPE);
  press_key(VK_TAB);
  EXPECT_TRUE(gets_focus("Text2"));
  EXPECT_TRUE(IsWindow(window));
}

TEST_F(ProgramWindow, EveryPressNeedsAKeyPressOfItsOwn) {
  write_file(machine.user_folder / "sub/bad.galaxy", "one line");
  open();
  for (int i = 0; i < 3; ++i)
    press_key(VK_TAB);
  ASSERT_TRUE(gets_focus("Command1"));
  int marks = 0;
  const auto comes_to_nothing = [&](const std::string& before) {
    PostMessageW(control("Text1"), WM_CHAR, '~', 0);  // handled after the keys
    ++marks;
    EXPECT_TRUE(wait_for([&] { return std::ranges::count(text("Text1"), '~') == marks; }));
    EXPECT_EQ(state(), before);
  };
  hold_key(VK_RETURN);
  comes_to_nothing("1011110 0");
  press_key(VK_RETURN);
  ASSERT_TRUE(gets_focus("Command2"));
  press_key(VK_RETURN);
  press_key(VK_SPACE);
  comes_to_nothing("0111110 1");
  Sleep(2 * GetDoubleClickTime());
  hold_key(VK_RETURN);
  comes_to_nothing("0111110 1");
  press_key(VK_RETURN);
  ASSERT_TRUE(wait_for([&] { return FindWindowW(L"#32770", nullptr) != nullptr; }));
  Sleep(2 * GetDoubleClickTime());
  hold_key(VK_RETURN);
  Sleep(200);
  EXPECT_NE(answer().find("bad.galaxy"), std::string::npos);
  EXPECT_EQ(state(), "1011110 2");
}

// Both search roots are one folder: each map is found twice, and listed once.
TEST_F(ProgramWindow, AListOfFailuresFitsTheScreenScrollsAndCanBeSelected) {
  for (int i = 0; i < 300; ++i)
    write_file(machine.user_folder / ("bad" + std::to_string(i) + ".galaxy"), "one line");
  for (const DWORD dpi : {96, 192}) {
    RegSetKeyValueW(HKEY_CURRENT_USER, dpi_key, dpi_name, REG_DWORD, &dpi, sizeof dpi);
    open();
    click("Command1");
    PostMessageW(control("Command2"), BM_CLICK, 0, 0);
    const HWND box = message_box();
    ASSERT_TRUE(box);
    const RECT work = work_area(box), at = place(box);
    RECT both;
    EXPECT_TRUE(UnionRect(&both, &work, &at) && EqualRect(&both, &work)) << dpi;
    EXPECT_GT(at.right - at.left, static_cast<LONG>(3 * dpi)) << dpi;

    const HWND list = text_box_of(box);
    EXPECT_EQ(focus(), GetDlgItem(box, IDOK));
    press_key(VK_TAB);
    EXPECT_TRUE(wait_for([&] { return focus() == list; }));
    EXPECT_EQ(SendMessageW(list, EM_GETFIRSTVISIBLELINE, 0, 0), 0);
    EXPECT_EQ(SendMessageW(list, EM_GETLINECOUNT, 0, 0) >= 301, true);
    EXPECT_TRUE(GetWindowLongPtrW(list, GWL_STYLE) & WS_VSCROLL);
    EXPECT_TRUE(GetWindowLongPtrW(list, GWL_STYLE) & ES_READONLY);
    SendMessageW(list, WM_CHAR, 1, 0);  // Ctrl+A
    EXPECT_GT(HIWORD(SendMessageW(list, EM_GETSEL, 0, 0)), 15000);
    const std::string message = answer();
    EXPECT_TRUE(message.starts_with("300 maps could not be converted and were skipped:\r\nC:\\"))
        << message.substr(0, 80);
    EXPECT_NE(message.find("bad299.galaxy"), std::string::npos);
  }
}

// The process stops when its window has just appeared, so that the click is there before it goes on
// to start up; now and then it stops too late.
TEST_F(ProgramWindow, AClickDuringStartUpWaits) {
  constexpr int starts = 8;
  const auto stops_with_window = [&] {
    SuspendThread(process.hThread);
    window = FindWindowW(window_class, nullptr);
    return IsWindowVisible(window);
  };
  for (int i = 0; i < starts; ++i) {
    start();
    while (!stops_with_window())
      ResumeThread(process.hThread);
    const RECT button = place("Command1");
    SetCursorPos((button.left + button.right) / 2, (button.top + button.bottom) / 2);
    for (const DWORD action : {MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP})
      mouse_event(action, 0, 0, 0, 0);
    ResumeThread(process.hThread);
    EXPECT_TRUE(wait_for([&] { return text("Label8") == "1"; }));
    EXPECT_EQ(state(), "0111110 1");
  }
}

TEST_F(ProgramWindow, FollowsTheLayoutAtAnySize) {
  open();
  SetWindowPos(window, nullptr, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
  const RECT design = place(window);
  for (const SIZE more : {SIZE{0, 0}, SIZE{150, 90}, SIZE{-1000, -1000}}) {
    SetWindowPos(window, nullptr, 0, 0, design.right + more.cx, design.bottom + more.cy,
                 SWP_NOZORDER);
    RECT client;
    GetClientRect(window, &client);
    for (const ControlLayout& row : layout()) {
      RECT at = place(row.name);
      MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&at), 2);
      const Place expected = place_of(row, client.right, client.bottom, 96);
      EXPECT_EQ(at.left, expected.left) << row.name;
      EXPECT_EQ(at.top, expected.top) << row.name;
      EXPECT_TRUE(row.sized_to_text || at.right - at.left == expected.width) << row.name;
      EXPECT_TRUE(row.kind == Kind::drive_list || at.bottom - at.top == expected.height);
      EXPECT_TRUE(at.right <= client.right && at.bottom <= client.bottom) << row.name;
    }
  }
  EXPECT_LE(place(window).right, 640);  // half of 1280 by 800 pixels, and room for a taskbar
  EXPECT_LE(place(window).bottom, 400 - 40);
}

// The window in the test's own process, which can ask for its fonts and its pointer.
TEST(MainWindow, ShowsByThePointerThatItIsBusy) {
  const GameMachine machine;
  const auto files = machine.files();
  WatchingSystem system;
  MainWindow window;
  Form1 form(*files, system, window);
  ASSERT_TRUE(window.open(form));
  load_form(form);
  system.window = FindWindowW(window_class, nullptr);
  const HWND exit_button = FindWindowExW(system.window, nullptr, L"Button", L"exit");
  LOGFONTW font{};
  GetObjectW(reinterpret_cast<HFONT>(SendMessageW(exit_button, WM_GETFONT, 0, 0)), sizeof font,
             &font);
  EXPECT_EQ(font.lfHeight, -24);  // 18 points at 96 dots per inch

  const HCURSOR arrow = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));
  const HCURSOR hourglass = LoadCursorW(nullptr, MAKEINTRESOURCEW(32514));
  for (Control* button : {&form.Command1, &form.Command2}) {
    system.pointers.clear();
    press(form, *button);
    EXPECT_EQ(system.pointers, std::set{hourglass});
    EXPECT_EQ(system.pointer(), arrow);
  }
}

TEST_F(ProgramWindow, ASilentRunNeedsNobodyUnlessItCannotStart) {
  const struct {
    const wchar_t* arguments;
    VersionParts release;
    const char* message;  // null: it converts the maps
  } cases[] = {
      {L" /s", {1, 2, 3, 3}, "found vora version :1.2.3.3:"},
      {L"   /s", {1, 2, 3, 4}, "Invalid argument: "},
      {L"  /Silent", {1, 2, 3, 4}, nullptr},
  };
  for (const auto& c : cases) {
    machine.set_release(c.release);
    start(c.arguments);
    const std::string message = c.message ? answer() : "";
    EXPECT_TRUE(message.starts_with(c.message ? c.message : "")) << message;
    EXPECT_EQ(exit_status(), c.message ? 1u : 0u);
    EXPECT_TRUE(read_file(machine.data / "stderr").starts_with(c.message ? c.message : ""));
    EXPECT_EQ(fs::exists(machine.user_folder / "b.galold"), !c.message);
  }
}

// Nothing seems to be registered then, so that the release does not match.
TEST_F(ProgramWindow, ReportsAMissingScriptHostByABoxUnlessSilent) {
  machine.set_script_host("{00000000-0000-0000-0000-000000000001}");
  for (const bool silent : {false, true}) {
    start(silent ? L" /s" : L"");
    const std::string box = silent ? "" : answer();
    EXPECT_EQ(box.starts_with("The Windows script host"), !silent) << box;
    EXPECT_TRUE(answer().starts_with("found vora version ::"));
    EXPECT_EQ(exit_status(), 1u);
    const std::string errors = read_file(machine.data / "stderr");
    EXPECT_EQ(errors.starts_with("The Windows script host"), silent) << errors;
  }
  machine.set_script_host("{72C24DD5-D70A-438B-8A42-98424B88AFB8}");
}

// Maps that may be read but not renamed, and maps that may not even be read; each is found twice.
TEST_F(ProgramWindow, MapsThatAnotherProgramHoldsAreWaitedForTogether) {
  constexpr int count = 27;
  const auto held = [&](int i, const char* suffix) {
    return machine.user_folder / ("held" + std::to_string(i) + suffix);
  };
  std::vector<Handle> holders;
  for (int i = 0; i < count; ++i) {
    write_file(held(i, ".galaxy"), old_map);
    holders.emplace_back(CreateFileW(held(i, ".galaxy").c_str(), GENERIC_READ,
                                     i % 2 ? FILE_SHARE_READ : 0, nullptr, OPEN_EXISTING, 0,
                                     nullptr));
  }
  const ULONGLONG begun = GetTickCount64();
  start(L" /s");
  EXPECT_EQ(exit_status(), 1u);
  EXPECT_LT(GetTickCount64() - begun, 20000u);
  holders.clear();
  for (int i = 0; i < count; ++i) {
    EXPECT_EQ(read_file(held(i, ".galaxy")), old_map);
    EXPECT_FALSE(fs::exists(held(i, ".galold")));
  }
  EXPECT_EQ(read_file(machine.user_folder / "b.galaxy"), converted_map);
}

// At any moment of the conversion; the next run finishes it.
TEST_F(ProgramWindow, LosesNoMapWhenItIsKilled) {
  constexpr int count = 20;
  const fs::path folder = machine.user_folder / "many";
  const auto name = [&](int i, const char* suffix) {
    return folder / ("map" + std::to_string(i) + suffix);
  };
  std::mt19937 random{GetTickCount()};
  for (int round = 0; round < 6; ++round) {
    remove_folder(folder.wstring());
    for (int i = 0; i < count; ++i)
      write_file(name(i, ".galaxy"), old_map);
    start(L" /s");
    const fs::path first = name(std::uniform_int_distribution(0, count - 1)(random), ".galold");
    for (int tries = 0; tries < 10000 && !fs::exists(first); ++tries)
      Sleep(1);
    kill();
    for (int i = 0; i < count; ++i) {
      const std::string map = read_file(name(i, ".galaxy"));
      EXPECT_TRUE(map == old_map ||
                  (map == converted_map && read_file(name(i, ".galold")) == old_map))
          << i;
    }
  }
  start(L" /s");
  EXPECT_EQ(exit_status(), 0u);
  for (int i = 0; i < count; ++i)
    EXPECT_EQ(read_file(name(i, ".galaxy")), converted_map) << i;
  EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 2 * count);
}
