// The registry of a machine kept in a folder, with the three operations of the scripting host's
// shell object: RegRead, RegWrite and RegDelete. A running Wine holds a registry of its own and
// writes it over these files when it ends.
#pragma once

#include "platform/prefix/registry_text.h"

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

// A value path is the root key, the key path and the value's name, joined by "\"; one that ends in
// "\" names the key itself, that is its default value. The roots are HKEY_LOCAL_MACHINE or HKLM
// (system.reg) and HKEY_CURRENT_USER or HKCU (user.reg), in any letter case; any other root fails.
class Registry {
public:
  // `machine` is the folder that holds system.reg and user.reg. Nothing is read yet.
  explicit Registry(const std::filesystem::path& machine);

  // The value, or nothing where there is none. The keys directly below another are read from their
  // file together, when one of them is first asked for, and once more after a change; a file that
  // is missing, cannot be read or has more than 1 GiB counts as empty. %NAME% in an expandable text
  // is left as it is.
  std::optional<RegistryValue> read(const std::string& value_path);

  // Sets a value, making its key where that is missing. `type` is REG_SZ, REG_EXPAND_SZ, REG_DWORD
  // or REG_BINARY in any letter case, the empty text REG_SZ. The data of the last two is a decimal
  // number of 32 bits, signed or not; REG_BINARY keeps its four bytes, the lowest first. The file
  // is changed as it stands at that moment, and replaced in one step with its permissions kept.
  // False, and nothing is changed, for any other type or data, a file that is there but cannot be
  // read, a machine folder that does not exist, or a failure to write.
  bool write(const std::string& value_path, const std::string& data, const std::string& type);

  // Deletes a value, or for a path that ends in "\" the key with everything below it. False, and
  // nothing is changed, where there is no such thing, for a root key, or on a failure to write.
  bool remove(const std::string& value_path);

private:
  // One of the two files.
  struct Hive {
    // Makes a new text of the file's; nothing where there is nothing to change.
    using Edit = std::function<std::optional<std::string>(std::string_view text)>;

    std::filesystem::path file;
    std::map<std::string, std::string> keys;  // by the path above those that were asked for

    const std::string& sections(const std::string& key);
    // Edits the file as it stands now; false where nothing was changed.
    bool change(const Edit& edit);
  };

  // The file of a root key, null for a root that is not kept.
  Hive* find_hive(const std::string& root);

  Hive local_machine;
  Hive current_user;
};
