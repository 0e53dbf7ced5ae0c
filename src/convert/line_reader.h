// Reads text files into line arrays.
#pragma once

#include "engine/line_array.h"
#include "platform/files.h"

#include <string>

// The lines of a file of exactly this name; fails when it is missing or cannot be read.
Result<LineArray> read_text(Files& files, const std::string& path);

// The same, but never fails: a missing file gives 11 empty lines (a folder and a hidden file count
// as missing), a file that cannot be read gives one empty line.
LineArray readlines(Files& files, const std::string& path);
