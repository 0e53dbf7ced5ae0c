// A system for tests that answers what it is told to.
#pragma once

#include "platform/system.h"

#include <map>

std::string lowercase(std::string_view text);  // that of the machine which the tests are built for

class FakeSystem : public System {
public:
  std::map<std::string, std::string> registry;
  std::optional<OsVersion> version = OsVersion{2, 6, 2};
  FolderPath folder{FolderPath::ok, "C:\\folder"};
  std::uint32_t askedfolder = 0;
  std::optional<ProductVersion> product;
  std::string own = "C:\\program";

  std::optional<std::string> regread(const std::string& valuepath) override {
    const auto value = registry.find(valuepath);
    return value == registry.end() ? std::nullopt : std::optional(value->second);
  }
  bool regwrite(const std::string& valuepath, const std::string& data,
                const std::string& type) override {
    registry[valuepath] = type + ":" + data;
    return true;
  }
  bool regdelete(const std::string& valuepath) override { return registry.erase(valuepath) > 0; }
  std::string environment(const std::string&) override { return ""; }
  std::optional<OsVersion> osversion() override { return version; }
  FolderPath folderpath(std::uint32_t csidl) override {
    askedfolder = csidl;
    return folder;
  }
  std::optional<ProductVersion> productversion(const std::string&) override { return product; }
  std::vector<std::string> drives() override { return {}; }
  std::string appfolder() override { return own; }
  std::string argumenttext() override { return ""; }
  std::string lowercase(std::string_view text) override { return ::lowercase(text); }
};
