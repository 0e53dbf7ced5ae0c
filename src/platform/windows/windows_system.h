// The system of Windows itself.
#pragma once

#include "platform/registry_and_folders.h"
#include "platform/system.h"

#include <memory>

class ComLibrary;
class ScriptShell;

class WindowsSystem : public System {
public:
  // `notice_in` is called once when the system has no scripting host: then nothing is registered.
  explicit WindowsSystem(ShowMessage notice_in);
  ~WindowsSystem() override;

  std::optional<std::string> reg_read(const std::string& value_path) override;
  bool reg_write(const std::string& value_path, const std::string& data,
                 const std::string& type) override;
  bool reg_delete(const std::string& value_path) override;
  std::string explain_unregistered(const std::string& subject) override;
  std::string installed_folder(const std::string& file) override;
  std::string manual() override { return "readme.txt"; }
  std::string environment(const std::string& name) override;

  // Windows caps it at 6.2, because the program's manifest declares no newer version.
  std::optional<OsVersion> os_version() override;

  FolderPath folder_path(std::uint32_t csidl) override;
  std::optional<ProductVersion> product_version(const std::string& path) override;
  std::vector<std::string> drives() override;
  std::string app_folder() override;
  std::string argument_text() override;
  std::string decode(std::string_view bytes) override;
  std::string lowercase(std::string_view text) override;

private:
  std::optional<ScriptShell> shell();

  const std::unique_ptr<ComLibrary> com;
  ShowMessage notice;  // empty once it was shown
};

// What follows the program's own name in a command line, and the blank that separates it: two
// where cmd starts the program, which doubles it. Further blanks are the user's.
std::string after_program_name(std::string_view command_line);
