// The system of a Windows machine that is kept in a folder.
#pragma once

#include "platform/prefix/machine.h"
#include "platform/prefix/paths.h"
#include "platform/prefix/registry.h"
#include "platform/system.h"

class PrefixSystem : public System {
public:
  // `argumentline` is what `argumenttext` gives.
  PrefixSystem(const Machine& machine, std::string argumentline);

  std::optional<std::string> regread(const std::string& valuepath) override;
  bool regwrite(const std::string& valuepath, const std::string& data,
                const std::string& type) override;
  bool regdelete(const std::string& valuepath) override;

  // The process's own variables come first, then those of the registry.
  std::string environment(const std::string& name) override;

  // Held at 6.2, as Windows itself answers a program that declares no newer version.
  std::optional<OsVersion> osversion() override;

  FolderPath folderpath(std::uint32_t csidl) override;
  std::optional<ProductVersion> productversion(const std::string& path) override;
  std::vector<std::string> drives() override;
  std::string appfolder() override;
  std::string argumenttext() override;
  std::string lowercase(std::string_view text) override;

private:
  std::optional<std::string> variable(const std::string& name);
  std::string expand(std::string_view text);
  void makefolder(const std::string& path);

  Paths paths;
  Registry registry;
  const std::string programfolder;
  const std::string arguments;
};
