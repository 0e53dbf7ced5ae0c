// The list of the game's own maps, which are never converted.
#pragma once

#include "form/form1.h"

#include <string_view>

// The target file (see app/target.h). Without it the list is empty.
inline constexpr char target_file[] = "targetvoraver.txt";

// Reads the list into `originalmaps`; a line that is no UTF-8 is in the system's code page. When
// its file is missing, or `missingdata` is set already, the list is a single empty entry and
// `missingdata` is set; then `list_problem` says why, except in debug mode. In a silent run it is
// on stderr.
void loadoriginalmaps(Form1& form);

// Shows `list_problem` in a message box, where there are maps to convert; in a silent run
// `loadoriginalmaps` has said it.
void warn_of_missing_list(Form1& form);

// Whether the file name of `path` is `name`, case-insensitively.
bool samefilename(System& system, std::string_view path, std::string_view name);

// Whether a map is one of the game's own.
bool is_original(const Form1& form, std::string_view path);
