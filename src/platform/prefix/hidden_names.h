// Which names of a Wine prefix Wine hides from Windows programs.
#pragma once

#include "platform/prefix/descriptor.h"

#include <optional>
#include <string>
#include <string_view>

class HiddenNames {
public:
  // `prefix_in` is the folder of the Wine prefix.
  explicit HiddenNames(std::string prefix_in) : prefix(std::move(prefix_in)) {}

  // Whether a name of an open folder is hidden. Only one that begins with a dot can be: it is,
  // unless its file's extended attribute of DOS attributes says that it is not (Wine 10 gives that
  // attribute to every such file that it makes) or Wine is set to show such names. Leaves errno.
  bool contain(const Descriptor& folder, std::string_view name);

private:
  bool shown_by_setting();

  const std::string prefix;
  std::optional<bool> setting;  // once it was read
};
