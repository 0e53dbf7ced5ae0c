// The system of a Windows machine that is kept in a folder: a Wine prefix.
#pragma once

#include "platform/prefix/machine.h"
#include "platform/prefix/paths.h"
#include "platform/prefix/registry.h"
#include "platform/system.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

class PrefixSystem : public System {
public:
  // `argument_line` is the result of `argument_text`.
  PrefixSystem(const Machine& machine, std::string argument_line);

  std::optional<std::string> reg_read(const std::string& value_path) override;
  bool reg_write(const std::string& value_path, const std::string& data,
                 const std::string& type) override {
    return registry.write(value_path, data, type);
  }
  bool reg_delete(const std::string& value_path) override { return registry.remove(value_path); }

  std::string explain_unregistered(const std::string& subject) override;
  std::string explain_unread_user() override;
  std::string machine_folder() override { return prefix_folder; }
  std::string installed_folder(const std::string& file) override;
  std::string manual() override { return "man vora-map-updater"; }

  // A variable of the process, else of the registry: one that Windows makes itself, the user's, or
  // the machine's; else one that Wine makes of the processor. %NAME% is expanded, at all levels, in
  // a registry value whose type asks for it and nowhere else; it stays where NAME is not set, and
  // where a variable would contain itself.
  std::string environment(const std::string& name) override;

  // At most 6.2, as Windows itself reports to a program that declares no newer version.
  std::optional<OsVersion> os_version() override;

  // A special folder of the user. Without a value for it in the registry, local application data
  // lies in the user's profile: "AppData\Local", before Windows Vista "Local Settings\Application
  // Data".
  FolderPath folder_path(std::uint32_t csidl) override;
  std::optional<ProductVersion> product_version(const std::string& path) override;
  std::vector<std::string> drives() override { return paths.drives(); }
  std::string app_folder() override { return paths.windows_path(program_folder); }
  std::string argument_text() override { return arguments; }
  void defer_interrupts(bool on) override;
  bool interrupted() override;

  // The code page is the one that the registry names, else 1252.
  std::string decode(std::string_view bytes) override;
  std::string lowercase(std::string_view text) override;

private:
  // The variables met in one expansion, by their names in lower case; nullopt for one that is not
  // set.
  using Variables = std::map<std::string, std::optional<std::string>>;

  std::optional<std::string> variable(const std::string& name, Variables& known);
  std::string expand(const RegistryValue& value, Variables& known);
  std::string registered_folder(const std::string& name);
  void make_folder(const std::string& path);

  Paths paths;
  Registry registry;
  const std::string prefix_folder;
  const std::string program_folder;
  const std::string arguments;
};
