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

  // Whether a name of an open folder is hidden. Its file's extended attribute of DOS attributes
  // says it (Wine 10 gives that attribute to every file with a leading dot that it makes); without
  // that attribute a name with a leading dot is hidden, unless Wine is set to show such names.
  // Leaves errno.
  bool contain(const Descriptor& folder, std::string_view name);

private:
  bool shown_by_setting();

  const std::string prefix;
  std::optional<bool> setting;  // once it was read
};
