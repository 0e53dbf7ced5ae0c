// What is said of a map that ends a run because of a template.
#pragma once

#include "form/form1.h"

#include <string>
#include <string_view>

// That the map at `path`, of the format version `version` as it stands in the map, cannot be
// converted because of a template. A missing file comes first.
std::string template_error(Form1& form, const std::string& path, std::string_view version,
                           const Failure& fault);

// What to do with the found maps of that version, to follow "No further map was converted". Reads
// all found maps, to count them, so that none may be open.
std::string advise_to_move(Form1& form, std::string_view version);
