// Messages on stderr, where no message box would be answered.
#pragma once

#include <string_view>

// Writes a message and a line end. The message's lines are separated by CR LF; they come out as the
// system's lines.
void write_stderr(std::string_view text);
