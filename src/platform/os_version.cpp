// The version of the operating system.
#include "platform/os_version.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr std::uint32_t any = ~std::uint32_t{0};

struct Row {
  std::uint32_t platform, major, minor;
  const char* name;
};

// The first row that matches gives the name.
constexpr Row rows[] = {
    {0, any, any, "32s"},      {1, any, 0, "95"},     {1, any, 90, "ME"}, {1, any, any, "98"},
    {2, 3, 0, "NT3"},          {2, 3, 1, "NT3.1"},    {2, 3, 5, "NT3.5"}, {2, 3, 51, "NT3.51"},
    {2, 4, any, "NT 4"},       {2, 5, 0, "Win2000"},  {2, 5, 1, "WinXP"}, {2, 5, 2, "WinXP x64 "},
    {2, 5, any, "Winxp x64?"}, {2, 6, 0, "WinVista"}, {2, 6, 1, "win7"},  {2, 6, any, "Win7+ x64?"},
};

bool fits(std::uint32_t wanted, std::uint32_t value) { return wanted == any || wanted == value; }

bool is_version(System& system, std::uint32_t major, std::uint32_t minor) {
  const auto version = system.os_version();
  return version && version->platform == OsVersion::nt_family && version->major == major &&
         version->minor == minor;
}

}  // namespace

std::string getosshortname(System& system) {
  const auto version = system.os_version();
  if (!version)
    return "";
  const auto row = std::find_if(std::begin(rows), std::end(rows), [&](const Row& r) {
    return r.platform == version->platform && fits(r.major, version->major) &&
           fits(r.minor, version->minor);
  });
  return row == std::end(rows) ? "" : row->name;
}

bool isvista(System& system) { return is_version(system, 6, 0); }
bool iswin7(System& system) { return is_version(system, 6, 1); }
