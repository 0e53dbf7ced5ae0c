// Which names of a Wine prefix Wine hides from Windows programs.
#include "platform/prefix/hidden_names.h"

#include "platform/prefix/registry.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <string_view>

#include <sys/xattr.h>

namespace {

// Where Wine, like Samba, keeps the DOS attributes that a file system does not have: "0x2".
constexpr char dos_attributes[] = "user.DOSATTRIB";
constexpr unsigned long hidden_or_system = 0x2 | 0x4;  // FILE_ATTRIBUTE_HIDDEN, _SYSTEM

constexpr char show_dot_files[] = R"(HKEY_CURRENT_USER\Software\Wine\ShowDotFiles)";

// Whether the attribute of a file hides it; nullopt if there is none.
std::optional<bool> hidden_by_attribute(const std::string& path) {
  std::array<char, 64> text{};  // ends in NUL
  if (::getxattr(path.c_str(), dos_attributes, text.data(), text.size() - 1) < 0)
    return std::nullopt;
  return std::string_view(text.data()).starts_with("0x") &&
         (std::strtoul(text.data(), nullptr, 16) & hidden_or_system) != 0;
}

}  // namespace

bool HiddenNames::contain(const std::string& folder, std::string_view name) {
  if (!name.starts_with('.'))
    return false;
  const int error = errno;
  const auto by_attribute = hidden_by_attribute(folder + "/" + std::string(name));
  const bool hidden = by_attribute ? *by_attribute : !shown_by_setting();
  errno = error;
  return hidden;
}

// Wine's way to say yes: the first letter counts.
bool HiddenNames::shown_by_setting() {
  if (!setting) {
    const auto value = Registry(prefix).read(show_dot_files);
    setting = value && value->type == RegistryValue::Type::text &&
              std::string_view("yYtT1").find(value->text[0]) != std::string_view::npos;
  }
  return *setting;
}
