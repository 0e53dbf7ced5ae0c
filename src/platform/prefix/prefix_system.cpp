// The system of a Windows machine that is kept in a folder: a Wine prefix.
#include "platform/prefix/prefix_system.h"

#include "platform/letter_case.h"
#include "platform/prefix/code_page.h"
#include "platform/prefix/descriptor.h"
#include "platform/prefix/process.h"
#include "platform/prefix/processor.h"
#include "platform/prefix/version_resource.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <tuple>

#include <utf8.h>

namespace fs = std::filesystem;

namespace {

constexpr char windows_nt[] = R"(HKEY_LOCAL_MACHINE\Software\Microsoft\Windows NT\CurrentVersion\)";
constexpr char explorer[] =
    R"(HKEY_CURRENT_USER\Software\Microsoft\Windows\CurrentVersion\Explorer\)";

// Where variables are set by name: those of the user's session by Windows, which come before those
// that it makes from other values, then the user's and the machine's.
constexpr char session_key[] = R"(HKEY_CURRENT_USER\Volatile Environment\)";
constexpr char user_key[] = R"(HKEY_CURRENT_USER\Environment\)";
constexpr char machine_key[] =
    R"(HKEY_LOCAL_MACHINE\System\CurrentControlSet\Control\Session Manager\Environment\)";

constexpr char code_page[] =
    R"(HKEY_LOCAL_MACHINE\System\CurrentControlSet\Control\Nls\CodePage\ACP)";

// The variables that Windows makes from other values below a key. Wine's user always has the same
// identifier.
constexpr char software[] = R"(HKEY_LOCAL_MACHINE\Software\Microsoft\)";
constexpr struct {
  std::string_view variable;  // in lower case
  const char* value;
} made_variables[] = {
    {"systemroot", R"(Windows NT\CurrentVersion\SystemRoot)"},
    {"programfiles", R"(Windows\CurrentVersion\ProgramFilesDir)"},
    {"programw6432", R"(Windows\CurrentVersion\ProgramFilesDir)"},
    {"programfiles(x86)", R"(Windows\CurrentVersion\ProgramFilesDir (x86))"},
    {"commonprogramfiles", R"(Windows\CurrentVersion\CommonFilesDir)"},
    {"commonprogramw6432", R"(Windows\CurrentVersion\CommonFilesDir)"},
    {"commonprogramfiles(x86)", R"(Windows\CurrentVersion\CommonFilesDir (x86))"},
    {"programdata", R"(Windows NT\CurrentVersion\ProfileList\ProgramData)"},
    {"allusersprofile", R"(Windows NT\CurrentVersion\ProfileList\ProgramData)"},
    {"public", R"(Windows NT\CurrentVersion\ProfileList\Public)"},
    {"userprofile",
     R"(Windows NT\CurrentVersion\ProfileList\S-1-5-21-0-0-0-1000\ProfileImagePath)"},
};

constexpr std::size_t most_variables = 200;    // in one text, at any level: bounds the recursion
constexpr std::size_t longest_result = 32767;  // of an expansion, as in Windows

constexpr char local_app_data[] = "Local AppData";

// The registry's name for the folder of a CSIDL value; null for any other value.
const char* folder_name(std::uint32_t csidl) {
  if (csidl == Csidl::local_app_data)
    return local_app_data;
  return csidl == Csidl::documents ? "Personal" : nullptr;
}

// A variable in the registry; numbers are none.
std::optional<RegistryValue> find_variable(Registry& registry, const std::string& name) {
  const std::string lowered = ::lowercase(name);
  std::vector<std::string> places{session_key + name};
  for (const auto& [variable, value] : made_variables)
    if (variable == lowered)
      places.push_back(software + std::string(value));
  places.insert(places.end(), {user_key + name, machine_key + name});
  for (const std::string& place : places)
    if (auto value = registry.read(place); value && value->type != RegistryValue::Type::number)
      return value;
  return std::nullopt;
}

// A version text such as "6.3".
std::optional<OsVersion> parse_version(std::string_view text) {
  OsVersion version{OsVersion::nt_family, 0, 0};
  const char* const end = text.data() + text.size();
  const auto major = std::from_chars(text.data(), end, version.major);
  if (major.ec != std::errc() || major.ptr == end || *major.ptr != '.')
    return std::nullopt;
  const auto minor = std::from_chars(major.ptr + 1, end, version.minor);
  return minor.ec == std::errc() ? std::optional(version) : std::nullopt;
}

}  // namespace

PrefixSystem::PrefixSystem(const Machine& machine, std::string argument_line)
    : paths(machine), registry(machine.folder), prefix_folder(machine.folder),
      program_folder(machine.program_folder), arguments(std::move(argument_line)) {}

std::optional<std::string> PrefixSystem::reg_read(const std::string& value_path) {
  const auto value = registry.read(value_path);
  Variables known;
  return value ? std::optional(expand(*value, known)) : std::nullopt;
}

std::string PrefixSystem::explain_unregistered(const std::string& subject) {
  return ::explain_unregistered(prefix_folder, registry.machine_failure(), subject);
}

std::string PrefixSystem::explain_unread_user() {
  const auto& failure = registry.user_failure();
  return failure ? prefix_folder + "/user.reg: " + failure->reason : "";
}

std::string PrefixSystem::installed_folder(const std::string& file) {
  std::error_code unreadable;  // counts as missing
  for (const fs::path& installation : installations(program_folder))
    if (fs::exists(installation / DATAFOLDER / file, unreadable))
      return (installation / DATAFOLDER).string();
  return "";
}

std::string PrefixSystem::environment(const std::string& name) {
  Variables known;
  return variable(name, known).value_or("");
}

std::optional<std::string> PrefixSystem::variable(const std::string& name, Variables& known) {
  if (const char* of_process = std::getenv(name.c_str()); of_process)
    return of_process;
  if (name.empty() || name.find('\\') != std::string::npos || known.size() == most_variables)
    return std::nullopt;
  // It counts as not set while its own value is expanded, so that a cycle ends.
  const auto [entry, added] = known.try_emplace(::lowercase(name));
  if (!added)
    return entry->second;
  if (entry->first == "systemdrive") {
    const auto root = variable("SystemRoot", known);
    entry->second = root ? std::optional(root->substr(0, 2)) : std::nullopt;
  } else {
    const auto value = find_variable(registry, name);
    entry->second = value ? std::optional(expand(*value, known))
                          : processor_variable(entry->first, !registry.is_32_bit());
  }
  return entry->second;
}

// The text of a value, in which every %NAME% that is set is replaced if its type asks for it, as
// long as the result is not too long.
std::string PrefixSystem::expand(const RegistryValue& value, Variables& known) {
  if (value.type != RegistryValue::Type::expandable_text)
    return value.text;
  std::string_view text = value.text;
  std::string result;
  while (!text.empty()) {
    const auto open = std::min(text.find('%'), text.size());
    result += text.substr(0, open);
    text.remove_prefix(open);
    const auto close = text.find('%', 1);
    if (close == std::string_view::npos)
      return result.append(text);
    const auto found = variable(std::string(text.substr(1, close - 1)), known);
    const bool replaced = found && result.size() + found->size() <= longest_result;
    // If no such variable is set, the second "%" may start the next name.
    result += replaced ? *found : std::string(text.substr(0, close));
    text.remove_prefix(replaced ? close + 1 : close);
  }
  return result;
}

std::optional<OsVersion> PrefixSystem::os_version() {
  const auto text = reg_read(std::string(windows_nt) + "CurrentVersion");
  const auto version = text ? parse_version(*text) : std::nullopt;
  const bool is_newer = version && std::tie(version->major, version->minor) > std::tuple(6u, 2u);
  return is_newer ? OsVersion{OsVersion::nt_family, 6, 2} : version;
}

FolderPath PrefixSystem::folder_path(std::uint32_t csidl) {
  const char* const name = folder_name(csidl & ~Csidl::create);
  if (!name)
    return {FolderPath::invalid_identifier, ""};
  const std::string path = registered_folder(name);
  if (path.empty())
    return {FolderPath::failed, ""};
  if (csidl & Csidl::create)
    make_folder(path);
  const auto location = paths.find(path);
  std::error_code ignored;
  if (!location || !fs::is_directory(location->path(), ignored))
    return {FolderPath::does_not_exist, ""};
  return {FolderPath::ok, path};
}

// A special folder by its name in the registry, empty when it is not known.
std::string PrefixSystem::registered_folder(const std::string& name) {
  for (const char* const key : {R"(Shell Folders\)", R"(User Shell Folders\)"})
    if (const auto path = reg_read(std::string(explorer) + key + name); path && !path->empty())
      return *path;
  const std::string profile = name == local_app_data ? environment("USERPROFILE") : "";
  if (profile.empty())
    return "";
  const auto version = os_version();
  const bool before_vista = version && version->major < 6;
  return profile + (before_vista ? R"(\Local Settings\Application Data)" : R"(\AppData\Local)");
}

// Creates a folder and its missing parents. Failures show when the folder is looked up.
void PrefixSystem::make_folder(const std::string& path) {
  for (std::size_t end = 0; end < path.size(); ++end) {
    end = std::min(path.find('\\', end), path.size());
    const auto location = paths.find(path.substr(0, end));
    std::error_code ignored;
    if (location && !location->exists)
      fs::create_directory(location->path(), ignored);
  }
}

std::optional<ProductVersion> PrefixSystem::product_version(const std::string& path) {
  const auto location = paths.find(path);
  std::error_code failed;
  if (!location || !fs::is_regular_file(location->path(), failed))
    return std::nullopt;
  std::ifstream executable(location->path(), std::ios::binary);
  if (!executable)
    throw_if_out_of_memory(errno);
  return read_product_version(executable);
}

void PrefixSystem::defer_interrupts(bool on) { ::defer_interrupts(on); }

bool PrefixSystem::interrupted() { return ::interrupted(); }

std::string PrefixSystem::decode(std::string_view bytes) {
  if (utf8::is_valid(bytes))
    return std::string(bytes);
  return from_code_page(reg_read(code_page).value_or(""), bytes);
}

std::string PrefixSystem::lowercase(std::string_view text) { return ::lowercase(text); }
