// Which names of a Wine prefix Wine hides from Windows programs.
#pragma once

#include <optional>
#include <string>
#include <string_view>

class HiddenNames {
public:
  // `prefix_in` is the folder of the Wine prefix.
  explicit HiddenNames(std::string prefix_in) : prefix(std::move(prefix_in)) {}

  // Whether a name in the folder of that POSIX path is hidden. Only one that begins with a dot can
  // be: it is, unless its file's extended attribute of DOS attributes says that it is not (Wine 10
  // sets that attribute on every such file that it makes) or Wine is set to show such names. A name
  // without a dot is not asked for the attribute, which can hide it, too: that would be a system
  // call for each file. Leaves errno.
  bool contain(const std::string& folder, std::string_view name);

private:
  bool shown_by_setting();

  const std::string prefix;
  std::optional<bool> setting;  // once it was read
};
