// Which names of a Wine prefix Wine hides from Windows programs.
#pragma once

#include "platform/prefix/paths.h"

#include <optional>
#include <string>

class HiddenNames {
public:
  // `prefix_in` is the folder of the Wine prefix.
  explicit HiddenNames(std::string prefix_in) : prefix(std::move(prefix_in)) {}

  // Whether a name is hidden. Only one that begins with a dot can be: it is, unless its file's
  // extended attribute of DOS attributes says that it is not (Wine 10 gives that attribute to every
  // such file that it makes) or Wine is set to show such names. Other names, which that attribute
  // can hide, too, are not asked for it: that would be a system call for each file. Leaves errno.
  bool contain(const Location& location);

private:
  bool shown_by_setting();

  const std::string prefix;
  std::optional<bool> setting;  // once it was read
};
