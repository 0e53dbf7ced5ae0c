// The program itself: starts it, works its window by the messages of its controls and reads what
// they show.
#include "form/form1.h"
#include "platform/windows/handle.h"
#include "tests/support/scratch_folder.h"
#include "tools/executable.h"
#include "ui/layout.h"
#include "ui/win32/main_window.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <random>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

constexpr wchar_t registration[] = L"SOFTWARE\\Wow6432Node\\Orbwright\\Paxhollow";
constexpr char game[] = "C:\\Program Files (x86)\\Vorakai";
constexpr char maps[] = "Kettlewick Games\\Vorakai";

std::string read(const fs::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

// Waits until `ready` holds, a minute at most.
bool waitfor(const std::function<bool()>& ready) {
  for (int tries = 0; tries < 1200; ++tries) {
    if (ready())
      return true;
    Sleep(50);
  }
  return false;
}

std::string text_of(HWND window) {
  std::wstring text(static_cast<std::size_t>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0)) + 1, 0);
  text.resize(static_cast<std::size_t>(
      SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
  return narrow(text);
}

// The text of a message box, which may have an icon before it.
std::string message_of(HWND box) {
  std::string text;
  for (HWND label = nullptr; text.empty();) {
    label = FindWindowExW(box, label, L"Static", nullptr);
    if (!label)
      break;
    text = text_of(label);
  }
  return text;
}

// A machine on which "WScript.Shell" is nobody's name for as long as the object lives.
class WithoutScriptHost {
public:
  WithoutScriptHost() {
    DWORD size = sizeof before;
    EXPECT_EQ(RegGetValueW(HKEY_LOCAL_MACHINE, key, nullptr, RRF_RT_REG_SZ, nullptr, before, &size),
              ERROR_SUCCESS);
    set(L"{00000000-0000-0000-0000-000000000001}");
  }
  WithoutScriptHost(const WithoutScriptHost&) = delete;
  WithoutScriptHost& operator=(const WithoutScriptHost&) = delete;
  ~WithoutScriptHost() { set(before); }

private:
  static constexpr wchar_t key[] = L"SOFTWARE\\Classes\\WScript.Shell\\CLSID";

  static void set(const std::wstring& identifier) {
    const auto size = static_cast<DWORD>((identifier.size() + 1) * sizeof(wchar_t));
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, key, nullptr, REG_SZ, identifier.c_str(), size);
  }

  wchar_t before[64] = {};
};

// The base game with the maps of the sample, and the program in a folder with its data files.
class ProgramWindow : public testing::Test {
protected:
  ProgramWindow() {
    if (!std::getenv("VORA_THROWAWAY_MACHINE"))
      throw std::runtime_error("these tests change the machine: run them by scripts/test-windows");
    wchar_t local[MAX_PATH];
    GetEnvironmentVariableW(L"LOCALAPPDATA", local, MAX_PATH);
    user = fs::path(local) / maps;
    clean();
    const fs::path project = PROJECT;
    fs::create_directories(user);
    fs::create_directories(game);
    const auto all = fs::copy_options::recursive | fs::copy_options::overwrite_existing;
    fs::copy(project / "sample/base/drive_c/users/player/AppData/Local" / maps, user, all);
    fs::copy(project / "sample/base/drive_c/Program Files (x86)/Vorakai", game, all);
    fs::copy(project / "data", data.path, all);
    set_release({1, 4, 2, 918});
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, (std::wstring(registration) + L"\\vora").c_str(), L"Path",
                    REG_SZ, widen(game).c_str(), sizeof game * sizeof(wchar_t));
  }

  ~ProgramWindow() override {
    if (process.hProcess) {
      kill();
      CloseHandle(process.hThread);
      CloseHandle(process.hProcess);
    }
    clean();
  }

  void clean() const {
    remove_folder(user.wstring());
    remove_folder(widen(game));
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, registration);
  }

  void set_release(const VersionParts& release) const {
    std::ofstream(fs::path(game) / "Vorakai.exe", std::ios::binary) << Executable{release}.bytes();
  }

  // What it says on standard error goes to the file `said`.
  void start(const std::wstring& arguments = L"") {
    std::wstring line = L"\"" + fs::path(PROGRAM).wstring() + L"\"" + arguments;
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const Handle output(CreateFileW(widen(data / "said").c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                                    &inherited, CREATE_ALWAYS, 0, nullptr));
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdError = output.get();
    ASSERT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                               widen(data.path).c_str(), &startup, &process));
  }

  void open() {
    start();
    ASSERT_TRUE(waitfor([&] {
      window = FindWindowW(window_class, nullptr);
      return window && IsWindowVisible(window) && !enabled("Command2");
    }));
  }

  // Waits for a message box and closes it; what it said.
  std::string answer() const {
    HWND box = nullptr;
    if (!waitfor([&] {
          box = FindWindowW(L"#32770", widen(program_title).c_str());
          return box && IsWindowVisible(box);
        }))
      return "no box";
    const std::string said = message_of(box);
    SendMessageW(GetDlgItem(box, IDOK), BM_CLICK, 0, 0);
    return said;
  }

  void kill() {
    TerminateProcess(process.hProcess, 99);
    WaitForSingleObject(process.hProcess, INFINITE);
  }

  DWORD exit_code() const {
    EXPECT_EQ(WaitForSingleObject(process.hProcess, 60000), WAIT_OBJECT_0);
    DWORD code = 0;
    GetExitCodeProcess(process.hProcess, &code);
    return code;
  }

  HWND control(const std::string& name) const {
    int identifier = first_control_id;
    for (const ControlLayout& row : layout()) {
      if (name == row.name)
        return GetDlgItem(window, identifier);
      ++identifier;
    }
    return nullptr;
  }

  std::string text(const std::string& name) const { return text_of(control(name)); }
  // Asked when the program has done what it is doing: a message waits for that, a look does not.
  bool enabled(const std::string& name) const {
    send(name, WM_NULL);
    return IsWindowEnabled(control(name));
  }
  LRESULT send(const std::string& name, UINT message, WPARAM word = 0, LPARAM detail = 0) const {
    return SendMessageW(control(name), message, word, detail);
  }

  // What a list holds, blanks at the start of its rows left out.
  std::vector<std::string> rows(const std::string& name) const {
    std::vector<std::string> result;
    for (LRESULT i = 0; i < send(name, LB_GETCOUNT); ++i) {
      wchar_t row[300];
      const auto index = static_cast<WPARAM>(i);
      send(name, LB_GETTEXT, index, reinterpret_cast<LPARAM>(row));
      const std::string shown = narrow(row);
      result.push_back(shown.substr(shown.find_first_not_of(' ')));
    }
    return result;
  }

  // Tells the window that something happened to a control, as the control itself does.
  void notify(const std::string& name, WORD code) const {
    const HWND from = control(name);
    SendMessageW(window, WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(from), code),
                 reinterpret_cast<LPARAM>(from));
  }

  HWND focus() const {
    GUITHREADINFO information{};
    information.cbSize = sizeof information;
    GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &information);
    return information.hwndFocus;
  }

  void key(WPARAM code) const { PostMessageW(focus(), WM_KEYDOWN, code, 0); }

  RECT place(const std::string& name) const {
    RECT rect;
    GetWindowRect(control(name), &rect);
    return rect;
  }

  fs::path user;
  ScratchFolder data;
  PROCESS_INFORMATION process{};
  HWND window = nullptr;
};

}  // namespace

TEST_F(ProgramWindow, WaitsForTheUserAsTheLayoutSays) {
  open();
  EXPECT_EQ(text_of(window), window_caption);
  for (const ControlLayout& row : layout()) {
    EXPECT_NE(control(row.name), nullptr) << row.name;
    EXPECT_EQ(IsWindowVisible(control(row.name)) != 0, row.visible) << row.name;
  }
  EXPECT_TRUE(enabled("Command1") && enabled("Command3") && enabled("Command6"));
  EXPECT_FALSE(enabled("Command2") || enabled("Command7"));
  EXPECT_EQ(text("Command6"), "vora/zendrel");
  EXPECT_EQ(text("Drive1"), "C:");
  EXPECT_TRUE(text("Label11").ends_with(" type")) << text("Label11");
  EXPECT_LE(place("Label11").right, place("Label17").left);
  EXPECT_EQ(focus(), control("Drive1"));
  PostMessageW(window, WM_CLOSE, 0, 0);
  EXPECT_EQ(exit_code(), 0u);
}

TEST_F(ProgramWindow, FindsAndFixesWithTheKeyboard) {
  open();
  send("Text1", WM_CHAR, 'x');
  SetForegroundWindow(window);
  send("Command1", BM_CLICK);
  EXPECT_FALSE(enabled("Command1"));
  EXPECT_TRUE(enabled("Command2"));
  EXPECT_TRUE(text("Text1").starts_with("xThe Quiet Rim.galaxy\r\n")) << text("Text1");
  EXPECT_NE(text("Text1").find("Große Leere.galaxy"), std::string::npos);
  // The machine is a Windows 7, on which both roots are the user's folder: ten maps, twice.
  EXPECT_EQ(text("Label8") + " " + text("Label6"), "1 19");

  EXPECT_TRUE(waitfor([&] { return focus() == control("Command2"); }));
  key(VK_RETURN);
  EXPECT_TRUE(waitfor([&] { return enabled("Command1"); }));
  EXPECT_FALSE(enabled("Command2"));
  EXPECT_EQ(text("Label8"), "2");
  EXPECT_NE(text("Text2").find("Amber Reach.galaxy\r\n"), std::string::npos);
  const fs::path expected =
      fs::path(PROJECT) / "tests/expected/base/drive_c/users/player/AppData/Local" / maps;
  for (const char* name : {"Amber Reach.galaxy", "Amber Reach.galold"})
    EXPECT_EQ(read(user / name), read(expected / name)) << name;

  EXPECT_TRUE(waitfor([&] { return focus() == control("Command1"); }));
  send("Command3", BM_CLICK);
  EXPECT_EQ(exit_code(), 0u);
}

// A box of the system's own takes some thirty thousand characters unless it is told otherwise.
TEST_F(ProgramWindow, ListsMoreThanATextBoxTakesByItself) {
  constexpr int count = 150;
  remove_folder(user.wstring());
  fs::create_directory(user);
  std::string names;
  for (int i = 0; i < count; ++i) {
    const std::string name = std::string(150, 'm') + std::to_string(count + i) + ".galaxy";
    std::ofstream(user / name) << "not a map";
    names += name + "\r\n";
  }
  open();
  send("Command1", BM_CLICK);
  const std::string shown = text("Text1");
  EXPECT_EQ(shown.size(), 2 * names.size());
  EXPECT_TRUE(shown == names + names);  // both roots are the same folder
}

TEST_F(ProgramWindow, ListsFollowOneAnother) {
  open();
  send("Command5", BM_CLICK);
  const auto shown = rows("Dir1");
  const auto selected = static_cast<std::size_t>(send("Dir1", LB_GETCURSEL));
  ASSERT_LT(selected, shown.size());
  EXPECT_EQ(shown.front(), "C:\\");
  EXPECT_EQ(shown[selected], "Vorakai");
  EXPECT_EQ(rows("File1"), (std::vector<std::string>{"Amber Reach.galaxy", "HOME.GALAXY"}));

  send("Dir1", LB_SETCURSEL, selected + 2);
  notify("Dir1", LBN_DBLCLK);
  EXPECT_EQ(rows("File1"), std::vector<std::string>{"The Great Spiral.galaxy"});
  send("Drive1", CB_SETCURSEL, static_cast<WPARAM>(send("Drive1", CB_GETCOUNT) - 1));
  notify("Drive1", CBN_SELCHANGE);
  EXPECT_EQ(text("Drive1"), "Z:");
  EXPECT_EQ(rows("Dir1").front(), "Z:\\");
  EXPECT_TRUE(rows("File1").empty());
}

TEST_F(ProgramWindow, TabGoesRoundWhatIsEnabledInTheLayoutsOrder) {
  open();
  SetForegroundWindow(window);
  std::vector<std::string> stops;
  for (const ControlLayout& row : layout())
    if (row.kind != Kind::label && enabled(row.name))
      stops.push_back(row.name);
  stops.push_back(stops.front());
  for (const std::string& stop : stops) {
    ASSERT_TRUE(waitfor([&] { return focus() == control(stop); })) << stop;
    key(VK_TAB);
  }
}

TEST_F(ProgramWindow, AToolTipTellsTheFolderOfAButton) {
  open();
  SetForegroundWindow(window);
  const RECT button = place("Command5");
  SetCursorPos((button.left + button.right) / 2, (button.top + button.bottom) / 2);
  HWND tip = nullptr;
  EXPECT_TRUE(waitfor([&] {
    tip = FindWindowW(L"tooltips_class32", nullptr);
    return IsWindowVisible(tip) != 0;
  }));
  EXPECT_EQ(text_of(tip), narrow((user / "").wstring()));
}

TEST_F(ProgramWindow, KeysInATextBoxWriteOrLeaveIt) {
  open();
  SetForegroundWindow(window);
  send("Text1", WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
  send("Text1", WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
  ASSERT_TRUE(waitfor([&] { return focus() == control("Text1"); }));
  key('A');
  key(VK_RETURN);
  EXPECT_TRUE(waitfor([&] { return text("Text1") == "a\r\n"; })) << text("Text1");
  key(VK_ESCAPE);
  key(VK_TAB);
  EXPECT_TRUE(waitfor([&] { return focus() == control("Text2"); }));
  EXPECT_TRUE(IsWindow(window));
}

TEST_F(ProgramWindow, GrowsButNeverBelowItsDesign) {
  open();
  RECT before;
  GetWindowRect(window, &before);
  const RECT list = place("File1");
  const RECT box = place("Text2");
  const RECT button = place("Command1");
  const int width = before.right - before.left;
  const int height = before.bottom - before.top;
  SetWindowPos(window, nullptr, 0, 0, width + 150, height + 90, SWP_NOZORDER);
  EXPECT_EQ(place("File1").bottom - place("File1").top, list.bottom - list.top + 90);
  EXPECT_EQ(place("Text2").bottom - place("Text2").top, box.bottom - box.top + 90);
  EXPECT_NEAR(place("Text2").right - place("Text2").left, box.right - box.left + 50, 1);
  EXPECT_EQ(place("Command1").right - place("Command1").left, button.right - button.left);
  SetWindowPos(window, nullptr, 0, 0, 100, 100, SWP_NOZORDER);
  RECT after;
  GetWindowRect(window, &after);
  EXPECT_EQ(after.right - after.left, width);
  EXPECT_EQ(after.bottom - after.top, height);
}

TEST_F(ProgramWindow, SaysWhatIsWrongAndEnds) {
  const struct {
    const wchar_t* arguments;
    VersionParts release;
    const char* said;
  } cases[] = {
      {L" /s", {1, 4, 2, 917}, "found vora version :1.4.2.917:"},
      {L" /s  -s", {1, 4, 2, 918}, "Invalid argument: "},
      {L" \"/s\"", {1, 4, 2, 918}, "Invalid argument: \"/s\""},
  };
  for (const auto& c : cases) {
    set_release(c.release);
    start(c.arguments);
    const std::string said = answer();
    EXPECT_TRUE(said.starts_with(c.said)) << said;
    EXPECT_EQ(exit_code(), 1u);
    EXPECT_FALSE(fs::exists(user / "Amber Reach.galold"));
  }
}

TEST_F(ProgramWindow, ASilentRunNeedsNobody) {
  start(L"   /Silent");
  EXPECT_EQ(exit_code(), 0u);
  EXPECT_TRUE(fs::exists(user / "Amber Reach.galold"));
}

// Nothing is registered then, so that the release does not match.
TEST_F(ProgramWindow, TellsThatThereIsNoScriptHostByABoxOnlyWhereSomebodyIs) {
  const WithoutScriptHost machine;
  for (const bool silent : {false, true}) {
    start(silent ? L" /s" : L"");
    const std::string box = silent ? "" : answer();
    EXPECT_EQ(box.starts_with("The Windows script host"), !silent) << box;
    EXPECT_TRUE(answer().starts_with("found vora version ::"));
    EXPECT_EQ(exit_code(), 1u);
    const std::string told = read(system_path(data / "said"));
    EXPECT_EQ(told.starts_with("The Windows script host"), silent) << told;
  }
}

// At any moment of the conversion; the next run finishes it.
TEST_F(ProgramWindow, AKilledRunLosesNoMap) {
  const fs::path expected =
      fs::path(PROJECT) / "tests/expected/base/drive_c/users/player/AppData/Local" / maps;
  const std::string old = read(user / "Amber Reach.galaxy");
  const std::string converted = read(expected / "Amber Reach.galaxy");
  const fs::path folder = user / "many";
  const auto name = [&](int i, const char* suffix) {
    return folder / ("map" + std::to_string(i) + suffix);
  };
  constexpr int count = 20;
  std::mt19937 random{GetTickCount()};
  for (int round = 0; round < 6; ++round) {
    remove_folder(folder.wstring());
    fs::create_directory(folder);
    for (int i = 0; i < count; ++i)
      std::ofstream(name(i, ".galaxy"), std::ios::binary) << old;
    start(L" /s");
    const fs::path first = name(std::uniform_int_distribution(0, count - 1)(random), ".galold");
    for (int tries = 0; tries < 10000 && !fs::exists(first); ++tries)
      Sleep(1);
    kill();
    for (int i = 0; i < count; ++i) {
      const std::string left = read(name(i, ".galaxy"));
      EXPECT_TRUE(left == old || (left == converted && read(name(i, ".galold")) == old)) << i;
    }
  }
  start(L" /s");
  EXPECT_EQ(exit_code(), 0u);
  for (int i = 0; i < count; ++i)
    EXPECT_EQ(read(name(i, ".galaxy")), converted) << i;
  EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 2 * count);
}
