// The system of Windows itself.
#include "platform/windows/windows_system.h"

#include "platform/letter_case.h"
#include "platform/windows/find_file.h"
#include "platform/windows/paths.h"
#include "platform/windows/script_shell.h"
#include "platform/windows/system_library.h"
#include "platform/windows/wide_text.h"

#include <algorithm>
#include <array>
#include <utility>

#include <windows.h>

#include <shlobj.h>

namespace {

constexpr char no_script_host[] =
    "The Windows script host, through which the registry is read, is not available.\r\n"
    "The program goes on as if no edition of the game were registered.";

// The functions of version.dll, a name under which games have libraries of their own.
template <class Function> Function* version_function(const std::string& name) {
  return system_function<Function>(L"version.dll", name.c_str());
}

// A file's version information, by the functions for a name of its kind, which end in `letter`;
// empty when there is none.
template <class Size, class Information, class Name>
std::string ask_information(const std::string& letter, const Name& name) {
  static const auto size_of = version_function<Size>("GetFileVersionInfoSize" + letter);
  static const auto information = version_function<Information>("GetFileVersionInfo" + letter);
  DWORD unused = 0;
  const DWORD size = size_of ? size_of(name.c_str(), &unused) : 0;
  std::string block(size, '\0');
  return size && information && information(name.c_str(), 0, size, block.data()) ? block : "";
}

// By the file's name in the code page, where it has one.
std::string version_information(const std::string& path) {
  if (const auto name = code_page_path(path))
    return ask_information<decltype(GetFileVersionInfoSizeA), decltype(GetFileVersionInfoA)>("A",
                                                                                             *name);
  return ask_information<decltype(GetFileVersionInfoSizeW), decltype(GetFileVersionInfoW)>(
      "W", widen(path));
}

}  // namespace

WindowsSystem::WindowsSystem(ShowMessage notice_in)
    : com(std::make_unique<ComLibrary>()), notice(std::move(notice_in)) {
  // A drive without a disk is reported by the program, not by a message box of the system.
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
}

WindowsSystem::~WindowsSystem() = default;

std::optional<ScriptShell> WindowsSystem::shell() {
  auto created = ScriptShell::create();
  if (!created && notice)
    std::exchange(notice, nullptr)(no_script_host);
  return created;
}

std::optional<std::string> WindowsSystem::reg_read(const std::string& value_path) {
  const auto object = shell();
  return object ? object->call(L"RegRead", {value_path}) : std::nullopt;
}

bool WindowsSystem::reg_write(const std::string& value_path, const std::string& data,
                              const std::string& type) {
  const auto object = shell();
  return object && object->call(L"RegWrite", {value_path, data, type});
}

bool WindowsSystem::reg_delete(const std::string& value_path) {
  const auto object = shell();
  return object && object->call(L"RegDelete", {value_path});
}

// Without the scripting host the notice has said why.
std::string WindowsSystem::explain_unregistered(const std::string& subject) {
  return shell() ? subject + " is not registered on this computer" : "";
}

// The archive has them beside the program.
std::string WindowsSystem::installed_folder(const std::string& file) {
  const std::string folder = app_folder();
  const auto location = locate(folder + "\\" + file);
  return location && find_file(location->wide()) ? folder : "";
}

std::string WindowsSystem::environment(const std::string& name) {
  const std::wstring wide = widen(name);
  return narrow(system_text([&](wchar_t* value, DWORD size) {
    return GetEnvironmentVariableW(wide.c_str(), value, size);
  }));
}

std::optional<OsVersion> WindowsSystem::os_version() {
  OSVERSIONINFOA version{};
  version.dwOSVersionInfoSize = sizeof version;
  if (GetVersionExA(&version) != 1)
    return std::nullopt;
  return OsVersion{version.dwPlatformId, version.dwMajorVersion, version.dwMinorVersion};
}

FolderPath WindowsSystem::folder_path(std::uint32_t csidl) {
  const int folder = static_cast<int>(csidl);
  std::array<char, MAX_PATH> path{};
  const HRESULT status =
      SHGetFolderPathA(nullptr, folder, nullptr, SHGFP_TYPE_CURRENT, path.data());
  FolderPath answer{static_cast<std::uint32_t>(status), from_code_page(path.data())};
  // The code page replaces characters that it lacks.
  std::array<wchar_t, MAX_PATH> wide{};
  if (answer.status == FolderPath::ok &&
      SHGetFolderPathW(nullptr, folder, nullptr, SHGFP_TYPE_CURRENT, wide.data()) == S_OK &&
      !to_code_page(narrow(wide.data())))
    answer.path = narrow(wide.data());
  return answer;
}

std::optional<ProductVersion> WindowsSystem::product_version(const std::string& path) {
  static const auto query = version_function<decltype(VerQueryValueA)>("VerQueryValueA");
  const std::string block = version_information(path);
  void* found = nullptr;
  UINT length = 0;
  if (block.empty() || !query || !query(block.data(), "\\", &found, &length))
    return std::nullopt;
  VS_FIXEDFILEINFO fixed;
  if (length < sizeof fixed)
    return std::nullopt;
  RtlMoveMemory(&fixed, found, sizeof fixed);
  return ProductVersion{fixed.dwProductVersionMS, fixed.dwProductVersionLS};
}

std::vector<std::string> WindowsSystem::drives() {
  std::vector<std::string> letters;
  const DWORD present = GetLogicalDrives();
  for (char letter = 'A'; letter <= 'Z'; ++letter)
    if (present >> (letter - 'A') & 1)
      letters.push_back({letter, ':'});
  return letters;
}

std::string WindowsSystem::app_folder() {
  constexpr DWORD longest = 1 << 15;  // a path has fewer characters
  std::wstring path(longest, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), longest));
  const std::string program = narrow(path);
  const std::string folder = program.substr(0, program.rfind('\\'));
  return folder.ends_with(':') ? folder + "\\" : folder;
}

std::string WindowsSystem::argument_text() { return after_program_name(narrow(GetCommandLineW())); }

std::string WindowsSystem::decode(std::string_view bytes) {
  return is_utf8(bytes) ? std::string(bytes) : from_code_page(bytes);
}

std::string WindowsSystem::lowercase(std::string_view text) { return ::lowercase(text); }

std::string after_program_name(std::string_view command_line) {
  constexpr std::size_t most_separators = 2;
  bool quoted = false;
  std::size_t end = 0;
  for (; end < command_line.size(); ++end) {
    const char c = command_line[end];
    if (!quoted && (c == ' ' || c == '\t'))
      break;
    if (c == '"')
      quoted = !quoted;
  }
  const auto blanks_end = std::min(command_line.find_first_not_of(" \t", end), command_line.size());
  return std::string(command_line.substr(std::min(end + most_separators, blanks_end)));
}
