// The registry of a Wine prefix, with the three operations of the scripting host's shell object:
// RegRead, RegWrite and RegDelete. A running Wine keeps the registry in memory and overwrites these
// files when it exits.
#pragma once

#include "platform/prefix/registry_text.h"
#include "platform/result.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

// A value path is the root key, the key path and the value's name, joined by "\"; one that ends in
// "\" names the key's default value. The roots are HKEY_LOCAL_MACHINE or HKLM (system.reg) and
// HKEY_CURRENT_USER or HKCU (user.reg), case-insensitive; any other root fails.
class Registry {
public:
  // `machine` is the folder of system.reg and user.reg. Nothing is read yet.
  explicit Registry(const std::filesystem::path& machine);

  // The value, or nullopt if there is none. Each file is read on first use, and again after a
  // change; one that is missing, unreadable or larger than 1 GiB counts as empty. %NAME% in an
  // expandable text is not expanded. In Wine 10 the current control set is a registry symlink to
  // the first, which holds the keys: what is not in the one is looked up in the other.
  std::optional<RegistryValue> read(const std::string& value_path);

  // Whether the prefix is a 32-bit Windows, which Wine notes in a line of system.reg.
  bool is_32_bit();

  // Why the machine's or the user's file, as far as it was read, counts as empty although it is
  // there.
  const std::optional<Failure>& machine_failure() const { return local_machine.failure; }
  const std::optional<Failure>& user_failure() const { return current_user.failure; }

  // Sets a value, like `with_value`. The file is read anew, and replaced in one step with its
  // permissions kept. False, with nothing changed, for any other type or data, a file that is
  // missing, that cannot be read or that another program writes, or a failed write.
  bool write(const std::string& value_path, const std::string& data, const std::string& type);

  // Deletes a value, or for a path that ends in "\" the key with everything below it. False, with
  // nothing changed, if there is none, for a root key, or if writing fails.
  bool remove(const std::string& value_path);

private:
  // One of the two files.
  struct Hive {
    // The new text of the file, or nullopt to leave it unchanged.
    using Edit = std::function<std::optional<std::string>(std::string_view text)>;

    std::filesystem::path file;         // absolute
    std::optional<std::string> text{};  // once it was read
    std::optional<Failure> failure{};   // why it counts as empty although it is there

    const std::string& read();
    // Edits the file as it is now; false if nothing was changed.
    bool change(const Edit& edit);
  };

  // What a value path names: a value, by its name, or for the empty name the key itself.
  struct Place {
    Hive& hive;
    std::string key, name;
  };

  // Nullopt for a path of another root, or with an empty component in its key.
  std::optional<Place> find_place(const std::string& value_path);

  Hive local_machine;
  Hive current_user;
};
