// A system for tests that answers what it is reported to.
#pragma once

#include "platform/system.h"

#include <map>

std::string lowercase(std::string_view text);  // that of the machine which the tests are built for

class FakeSystem : public System {
public:
  std::map<std::string, std::string> registry;
  std::optional<OsVersion> version = OsVersion{2, 6, 2};
  FolderPath folder{FolderPath::ok, "C:\\folder"};
  std::uint32_t asked_folder = 0;
  std::optional<ProductVersion> product;
  std::string own = "C:\\program";

  std::optional<std::string> reg_read(const std::string& value_path) override {
    const auto value = registry.find(value_path);
    return value == registry.end() ? std::nullopt : std::optional(value->second);
  }
  bool reg_write(const std::string& value_path, const std::string& data,
                 const std::string& type) override {
    registry[value_path] = type + ":" + data;
    return true;
  }
  bool reg_delete(const std::string& value_path) override { return registry.erase(value_path) > 0; }
  std::string environment(const std::string&) override { return ""; }
  std::optional<OsVersion> os_version() override { return version; }
  FolderPath folder_path(std::uint32_t csidl) override {
    asked_folder = csidl;
    return folder;
  }
  std::optional<ProductVersion> product_version(const std::string&) override { return product; }
  std::vector<std::string> drives() override { return {}; }
  std::string app_folder() override { return own; }
  std::string argument_text() override { return ""; }
  std::string decode(std::string_view bytes) override { return std::string(bytes); }
  std::string lowercase(std::string_view text) override { return ::lowercase(text); }
};
