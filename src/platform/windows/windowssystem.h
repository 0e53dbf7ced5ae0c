// The system of Windows itself.
#pragma once

#include "platform/services.h"
#include "platform/system.h"

#include <memory>

class ComLibrary;
class ScriptShell;

class WindowsSystem : public System {
public:
  // `itsnotice` is told once when the system has no scripting host: nothing is registered then.
  explicit WindowsSystem(Tell itsnotice);
  ~WindowsSystem() override;

  std::optional<std::string> regread(const std::string& valuepath) override;
  bool regwrite(const std::string& valuepath, const std::string& data,
                const std::string& type) override;
  bool regdelete(const std::string& valuepath) override;
  std::string environment(const std::string& name) override;

  // Held at 6.2 by Windows: the program's manifest declares no newer version.
  std::optional<OsVersion> osversion() override;

  FolderPath folderpath(std::uint32_t csidl) override;
  std::optional<ProductVersion> productversion(const std::string& path) override;
  std::vector<std::string> drives() override;
  std::string appfolder() override;
  std::string argumenttext() override;
  std::string lowercase(std::string_view text) override;

private:
  std::optional<ScriptShell> shell();

  const std::unique_ptr<ComLibrary> com;
  Tell notice;  // empty once told
};

// What follows the program's own name in the text of a command line, and the blanks after it.
std::string afterprogram(std::string_view commandline);
