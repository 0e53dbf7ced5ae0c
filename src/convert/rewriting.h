// Writes a section of a map in the new format.
#pragma once

#include "convert/templates.h"
#include "form/linearray.h"
#include "platform/result.h"

#include <cstddef>
#include <string>
#include <string_view>

// Why a template cannot write a section that a map asks of it.
struct TemplateError {
  std::string filename;  // the template's
  std::string what;      // what is wrong with it
  std::string header;    // the section's header line, empty where there is none
};

// Adds a line and its line end to a text.
void write_line(std::string& out, std::string_view line);

// Adds section `s` of the new template to `out`, with the values of the block of map lines that
// starts at line `k`; a value that lies beyond the map's end is empty. Gives the number of lines
// that the block has by the old template. On failure nothing was added.
Result<long long, TemplateError> rewritesection(const OldTemplate& oldtemplate,
                                                const NewTemplate& newtemplate, std::size_t s,
                                                const LineArray& galaxylines, std::size_t k,
                                                std::string& out);
