// Which names of a Wine prefix Wine hides from Windows programs.
#pragma once

#include <optional>
#include <string>
#include <string_view>

class HiddenNames {
public:
  // `prefix_in` is the folder of the Wine prefix.
  explicit HiddenNames(std::string prefix_in) : prefix(std::move(prefix_in)) {}

  // Whether a name in the folder of that POSIX path is hidden. Names with a leading dot are, unless
  // the file has an extended attribute with DOS attributes that do not hide it (Wine 10 sets one on
  // every such file that it makes) or Wine is set to show such names. The attribute can hide other
  // names, too, but reading it would cost a system call for each file. Leaves errno.
  bool contain(const std::string& folder, std::string_view name);

private:
  bool shown_by_setting();

  const std::string prefix;
  std::optional<bool> setting;  // once it was read
};
