// The system of Windows itself.
#include "platform/windows/windows_system.h"

#include "tests/support/test_machine.h"
#include "tests/support/windows/folders.h"
#include "tools/executable.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <winreg.h>

namespace {

constexpr char key[] = R"(HKEY_CURRENT_USER\Software\Vora Map Updater Test\)";
constexpr wchar_t subkey[] = L"Software\\Vora Map Updater Test";

class WindowsSystemTest : public testing::Test {
protected:
  ~WindowsSystemTest() override { RegDeleteTreeW(HKEY_CURRENT_USER, subkey); }

  template <class Value> void put(const wchar_t* name, DWORD type, const Value& value) {
    RegSetKeyValueW(HKEY_CURRENT_USER, subkey, name, type, &value, sizeof value);
  }

  std::string read(const std::string& name) {
    return system.reg_read(key + name).value_or("nothing");
  }

  TestMachine machine;
  const std::string folder = "C:\\users\\me\\";
  std::vector<std::string> notices;
  WindowsSystem system{[this](const std::string& text) { notices.push_back(text); }};
};

}  // namespace

TEST_F(WindowsSystemTest, ReadsAndWritesTheRegistryAsTheScriptHostDoes) {
  put(L"text", REG_SZ, L"C:\\Spiele\\Größe Ж");
  put(L"number", REG_DWORD, DWORD{0xFFFFFFFE});
  put(L"expand", REG_EXPAND_SZ, L"%VORATEST%\\x");
  put(L"bytes", REG_BINARY, DWORD{7});
  SetEnvironmentVariableW(L"VORATEST", L"value");
  EXPECT_EQ(read("text"), "C:\\Spiele\\Größe Ж");
  EXPECT_EQ(read("number"), "4294967294");
  EXPECT_EQ(read("expand"), "value\\x");
  EXPECT_EQ(read("bytes"), "nothing");
  EXPECT_EQ(read("missing"), "nothing");
  EXPECT_FALSE(system.reg_read("no such root\\x"));
  EXPECT_TRUE(system.reg_write(std::string(key) + "written", "C:\\Ж", "REG_SZ"));
  EXPECT_EQ(read("written"), "C:\\Ж");
  EXPECT_TRUE(notices.empty());
}

TEST_F(WindowsSystemTest, FindsTheUsersFoldersWhateverTheirNames) {
  for (const char* name : {"plain", "Łukasz", "Дмитрий", "漢字"}) {
    const std::string expected = folder + name;
    const MovedFolder moved(L"Local AppData", expected);
    const FolderPath answer = system.folder_path(0x801C);
    EXPECT_EQ(answer.status, FolderPath::ok);
    EXPECT_EQ(answer.path, expected);
    EXPECT_TRUE(std::filesystem::is_directory(system_path(expected)));
  }
  EXPECT_EQ(system.folder_path(0x8005).status, FolderPath::ok);
  EXPECT_EQ(system.folder_path(0x7FFF).status, FolderPath::invalid_identifier);
}

TEST_F(WindowsSystemTest, ReadsProductVersions) {
  Executable game{{1, 40000, 0, 65535}};
  for (const std::string place : {"", "Größe\\", "Игры\\漢字\\"}) {
    for (const bool has_version : {true, false}) {
      game.version_resource = has_version;
      write_file(system_path(folder + place + "game.exe"), game.bytes());
      const auto version = system.product_version(folder + place + "game.exe");
      ASSERT_EQ(version.has_value(), has_version) << place;
      EXPECT_TRUE(!version || (version->high == (1u << 16 | 40000u) && version->low == 65535u));
    }
  }
  write_file(system_path(folder + "text.exe"), "no executable");
  for (const char* name : {"text.exe", "missing.exe", "", "漢字.exe"})
    EXPECT_FALSE(system.product_version(folder + name)) << name;
}

TEST_F(WindowsSystemTest, KnowsItsSurroundings) {
  const auto version = system.os_version();  // one that the table of names has
  EXPECT_TRUE(version && version->platform == 2 && version->major == 6 && version->minor <= 2);
  SetEnvironmentVariableW(L"VORATEST", L"Ж value");
  EXPECT_EQ(system.environment("voratest"), "Ж value");
  SetEnvironmentVariableW(L"VORATEST", nullptr);
  EXPECT_EQ(system.environment("voratest"), "");
  EXPECT_EQ(system.lowercase("/SILENT ÄÖŽЖ 漢"), "/silent äöžж 漢");
  const auto drives = system.drives();
  EXPECT_NE(std::find(drives.begin(), drives.end(), "C:"), drives.end());
  EXPECT_FALSE(system.app_folder().ends_with('\\'));
}

TEST(CommandLine, TheArgumentsBeginAfterTheProgramsName) {
  const std::pair<const char*, const char*> cases[] = {
      {"program", ""},
      {"program  ", ""},
      {"program /s", "/s"},
      {R"("C:\Program Files\a.exe" /s)", "/s"},
      {R"("C:\Program Files\a.exe")", ""},
      {R"(C:\"Program Files"\a.exe  /s  -s )", "/s  -s "},
      {R"(program "/s")", R"("/s")"},
      {"program   /s", " /s"},
      {"program    ", "  "},
      {"program\t/s", "/s"},
      {"\"unclosed /s", ""},
      {"", ""},
  };
  for (const auto& [line, arguments] : cases)
    EXPECT_EQ(after_program_name(line), arguments) << line;
}

TEST(Wide, TextsSurviveTheWayToWindowsAndBack) {
  const std::string text = "a Ä Ж 漢 \xF0\x9F\x9A\x80";
  EXPECT_EQ(narrow(widen(text)), text);
  EXPECT_EQ(narrow(widen("")), "");
  EXPECT_EQ(widen("\xFF"), L"\xFFFD");
  EXPECT_EQ(from_code_page(to_code_page("plain").value()), "plain");
  EXPECT_TRUE(GetACP() == CP_UTF8 || !to_code_page("漢字 Ж ü"));
  const TestMachine machine;
  write_file(system_path("C:\\users\\me\\漢字 Ж\\x"), "");
  const auto path = code_page_path("C:\\users\\me\\漢字 Ж\\x");
  EXPECT_TRUE(!path || GetFileAttributesA(path->c_str()) != INVALID_FILE_ATTRIBUTES);
}

TEST(Paths, AreMadeAbsolute) {
  const std::pair<const char*, const wchar_t*> cases[] = {
      {"c:\\a/b\\\\.\\c\\..\\d", L"\\\\?\\C:\\a\\b\\d"},
      {"C:", L"\\\\?\\C:\\"},
      {"\\\\server\\share\\x\\", L"\\\\?\\UNC\\server\\share\\x"},
      {"\\\\?\\UNC\\server\\share\\x", L"\\\\?\\UNC\\server\\share\\x"},
      {"\\\\?\\C:\\x", L"\\\\?\\C:\\x"},
      {"C:\\..\\..\\x", L"\\\\?\\C:\\x"},
  };
  for (const auto& [path, wide] : cases)
    EXPECT_EQ((*locate(path)).wide(), wide) << path;
  EXPECT_EQ((*locate("\\\\server\\share\\x")).text(), "\\\\server\\share\\x");
}
