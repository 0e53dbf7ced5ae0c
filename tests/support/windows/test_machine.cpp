// The Windows machine that Wine makes for the tests, as they need it: its real drive, registry and
// folders, with the program's folder, its arguments and the version of Windows as a test says.
#include "tests/support/test_machine.h"

#include "platform/windows/windows_files.h"
#include "platform/windows/windows_system.h"
#include "tests/support/windows/folders.h"

#include <cstdlib>
#include <set>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

constexpr char user[] = "C:\\users\\me";

// The machine is the process's own: there is one at a time.
struct Changes {
  MovedFolder local{L"Local AppData", std::string(user) + "\\AppData\\Local"};
  MovedFolder documents{L"Personal", std::string(user) + "\\Documents"};
  std::set<fs::path> before{fs::directory_iterator("C:\\"), {}};
  OsVersion version{};
};
std::unique_ptr<Changes> changes;

class MachineSystem : public WindowsSystem {
public:
  MachineSystem(std::string folder_in, std::string arguments_in)
      : WindowsSystem(nullptr), folder(std::move(folder_in)), arguments(std::move(arguments_in)) {}
  std::optional<OsVersion> os_version() override { return changes->version; }
  std::string app_folder() override { return folder; }
  std::string argument_text() override { return arguments; }

private:
  const std::string folder, arguments;
};

// The tests' leavings on drive C: and in the registry are removed: never on somebody's own Windows.
void need_throwaway() {
  if (!std::getenv("VORA_THROWAWAY_MACHINE"))
    throw std::runtime_error("these tests change the machine: run them by scripts/test-windows");
}

}  // namespace

TestMachine::TestMachine() {
  need_throwaway();
  if (changes)
    throw std::logic_error("there is another machine already");
  changes = std::make_unique<Changes>();
  drive_c = "C:\\";
  const fs::path root = "Z:\\tmp\\vora-test-" + std::to_string(GetCurrentProcessId());
  data = root / "data";
  program = root / "program";
  make_folders();
  set_version("6.3");
  for (const wchar_t* name :
       {L"PROCESSOR_ARCHITECTURE", L"PROCESSOR_IDENTIFIER", L"NUMBER_OF_PROCESSORS"})
    SetEnvironmentVariableW(name, nullptr);
}

TestMachine::~TestMachine() {
  SetCurrentDirectoryW(L"C:\\");
  remove_folder(program.parent_path().wstring());
  remove_folder(widen(user));
  for (const auto& entry : fs::directory_iterator("C:\\"))
    if (!changes->before.contains(entry.path()) && !DeleteFileW(entry.path().c_str()))
      remove_folder(entry.path().wstring());
  for (const wchar_t* key : {L"Software\\Orbwright", L"Software\\Wow6432Node\\Orbwright"})
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, key);
  changes.reset();
}

void TestMachine::set_registry(const std::string& key, const std::string& name,
                               const std::string& text) {
  const std::wstring wide = widen(text);
  RegSetKeyValueW(HKEY_LOCAL_MACHINE, widen(key).c_str(), widen(name).c_str(), REG_SZ, wide.c_str(),
                  static_cast<DWORD>((wide.size() + 1) * sizeof(wchar_t)));
}

void TestMachine::set_version(const std::string& version) {
  const auto part = [&](std::size_t at) { return static_cast<std::uint32_t>(version[at] - '0'); };
  changes->version = {2, part(0), std::min(part(2), 2u)};  // held at 6.2, as by Windows
}

bool TestMachine::hides_dots() const {
  write_file(data / ".hidden", "");
  return GetFileAttributesW((data / ".hidden").c_str()) & FILE_ATTRIBUTE_HIDDEN;
}

std::unique_ptr<Files> TestMachine::files() const {
  SetCurrentDirectoryW(data.c_str());
  return std::make_unique<WindowsFiles>();
}

std::unique_ptr<System> TestMachine::system(const std::string& arguments) const {
  return std::make_unique<MachineSystem>(program.string(), arguments);
}

std::string z_path(const fs::path& path) { return path.string(); }
