// The system of a Windows machine that is kept in a folder.
#include "platform/prefix/prefixsystem.h"

#include "platform/prefix/lettercase.h"
#include "platform/prefix/versionresource.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <tuple>

namespace fs = std::filesystem;

namespace {

constexpr char windowsnt[] = R"(HKEY_LOCAL_MACHINE\Software\Microsoft\Windows NT\CurrentVersion\)";
constexpr char sessionvariables[] =
    R"(HKEY_LOCAL_MACHINE\System\CurrentControlSet\Control\Session Manager\Environment\)";
constexpr char shellfolders[] =
    R"(HKEY_CURRENT_USER\Software\Microsoft\Windows\CurrentVersion\Explorer\Shell Folders\)";

constexpr std::uint32_t createflag = 0x8000;  // CSIDL_FLAG_CREATE
constexpr std::uint32_t ntfamily = 2;         // VER_PLATFORM_WIN32_NT

// The names under which the registry keeps the folders of CSIDL values.
const char* foldername(std::uint32_t csidl) {
  if (csidl == 0x1C)  // CSIDL_LOCAL_APPDATA
    return "Local AppData";
  return csidl == 0x05 ? "Personal" : nullptr;  // CSIDL_PERSONAL
}

// A version text such as "6.3".
std::optional<OsVersion> parseversion(std::string_view text) {
  OsVersion version{ntfamily, 0, 0};
  const char* const end = text.data() + text.size();
  const auto major = std::from_chars(text.data(), end, version.major);
  if (major.ec != std::errc() || major.ptr == end || *major.ptr != '.')
    return std::nullopt;
  const auto minor = std::from_chars(major.ptr + 1, end, version.minor);
  return minor.ec == std::errc() ? std::optional(version) : std::nullopt;
}

OsVersion held(const OsVersion& version) {
  constexpr OsVersion newest{ntfamily, 6, 2};
  const bool newer = std::tie(version.major, version.minor) > std::tie(newest.major, newest.minor);
  return newer ? newest : version;
}

}  // namespace

PrefixSystem::PrefixSystem(const Machine& machine, std::string argumentline)
    : paths(machine), registry(machine.folder), programfolder(machine.programfolder),
      arguments(std::move(argumentline)) {}

std::optional<std::string> PrefixSystem::regread(const std::string& valuepath) {
  const auto value = registry.read(valuepath);
  if (!value)
    return std::nullopt;
  switch (value->type) {
  case RegistryValue::Type::text:
    return value->text;
  case RegistryValue::Type::expandtext:
    return expand(value->text);
  case RegistryValue::Type::number:
    return std::to_string(value->number);
  default:
    return std::nullopt;
  }
}

bool PrefixSystem::regwrite(const std::string& valuepath, const std::string& data,
                            const std::string& type) {
  return registry.write(valuepath, data, type);
}

bool PrefixSystem::regdelete(const std::string& valuepath) { return registry.remove(valuepath); }

// A variable as it is set, not expanded. Wine itself sets the one that others build on.
std::optional<std::string> PrefixSystem::variable(const std::string& name) {
  const char* own = std::getenv(name.c_str());
  if (own && *own)
    return own;
  const bool root = ::lowercase(name) == "systemroot";
  const auto value = registry.read((root ? windowsnt : sessionvariables) + name);
  return value ? std::optional(value->text) : std::nullopt;
}

std::string PrefixSystem::environment(const std::string& name) {
  return expand(variable(name).value_or(""));
}

// Every %NAME% that is set gives way to its value, once.
std::string PrefixSystem::expand(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const auto open = std::min(text.find('%'), text.size());
    result += text.substr(0, open);
    text.remove_prefix(open);
    const auto close = text.find('%', 1);
    if (close == std::string_view::npos)
      return result.append(text);
    const auto value = variable(std::string(text.substr(1, close - 1)));
    // A "%" that opens no name may still close the next one.
    result += value ? *value : std::string(text.substr(0, close));
    text.remove_prefix(value ? close + 1 : close);
  }
  return result;
}

std::optional<OsVersion> PrefixSystem::osversion() {
  const auto text = regread(std::string(windowsnt) + "CurrentVersion");
  const auto version = text ? parseversion(*text) : std::nullopt;
  return version ? std::optional(held(*version)) : std::nullopt;
}

FolderPath PrefixSystem::folderpath(std::uint32_t csidl) {
  const char* const name = foldername(csidl & ~createflag);
  if (!name)
    return {FolderPath::invalididentifier, ""};
  const auto path = regread(std::string(shellfolders) + name);
  if (!path || path->empty())
    return {FolderPath::failed, ""};
  if (csidl & createflag)
    makefolder(*path);
  const auto location = paths.find(*path);
  std::error_code ignored;
  if (!location || !fs::is_directory(location->path(), ignored))
    return {FolderPath::doesnotexist, ""};
  return {FolderPath::ok, *path};
}

// Makes a folder and those above it where they are missing and can be made.
void PrefixSystem::makefolder(const std::string& path) {
  for (std::size_t end = 0; end < path.size(); ++end) {
    end = std::min(path.find('\\', end), path.size());
    const auto location = paths.find(path.substr(0, end));
    std::error_code ignored;
    if (location && !location->exists)
      fs::create_directory(location->path(), ignored);
  }
}

std::optional<ProductVersion> PrefixSystem::productversion(const std::string& path) {
  const auto location = paths.find(path);
  std::error_code failed;
  if (!location || !fs::is_regular_file(location->path(), failed))
    return std::nullopt;
  std::ifstream executable(location->path(), std::ios::binary);
  return readproductversion(executable);
}

std::vector<std::string> PrefixSystem::drives() { return paths.drives(); }

std::string PrefixSystem::appfolder() { return paths.windowspath(programfolder); }

std::string PrefixSystem::argumenttext() { return arguments; }

std::string PrefixSystem::lowercase(std::string_view text) { return ::lowercase(text); }
