// The target file, which names the release of the game that the program is for and switches debug
// mode on, and the diagnostic file "info.txt" of debug mode.
#pragma once

#include "form/form1.h"

#include <optional>
#include <string>

// Reads the target file and switches debug mode on if it says so.
void read_target(Form1& form);

// The release that the installed game must have. There is none when both editions are found, a data
// file is missing or debug mode is on.
std::optional<std::string> required_release(Form1& form);

// In debug mode makes "info.txt" in the current folder anew, empty. The first failure of this and
// of `write_info` is reported, and nothing more is written then.
void create_info(Form1& form);

// In debug mode appends a line to it.
void write_info(Form1& form, const std::string& line);
