// Messages on stderr, where no message box would be answered.
#include "ui/write_stderr.h"

#include "platform/printable.h"

#include <iostream>

void write_stderr(std::string_view text) {
  for (auto end = text.find("\r\n"); end != std::string_view::npos; end = text.find("\r\n")) {
    std::cerr << printable(text.substr(0, end)) << '\n';
    text.remove_prefix(end + 2);
  }
  std::cerr << printable(text) << '\n';
}
