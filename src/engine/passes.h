// The two passes that turn the lines of a map into its text in the new format.
#pragma once

#include "engine/templates.h"

#include <cstddef>
#include <string>
#include <vector>

// A block that a pass replaced.
struct Block {
  std::size_t line;           // of the map, its first
  std::size_t count;          // its lines in the map; 0 when they were only inserted before `line`
  std::size_t recognised_by;  // the line of the old template
};
using Blocks = std::vector<Block>;

// In all of these a failure's path is the template's file name, and its reason says why the
// template cannot write a section that the map asks for; it is `missing` when the template is.

// Appends section `s` of the new template to `out`, with the values of the block of map lines that
// starts at line `k`; a value beyond the map's end is empty. Returns the number of lines that the
// block has by the old template. On failure nothing was appended.
Result<long long> rewritesection(const OldTemplate& oldtemplate, const NewTemplate& newtemplate,
                                 std::size_t s, const LineArray& galaxylines, std::size_t k,
                                 std::string& out);

// The first pass: every line that the old template recognises starts a block, which is replaced by
// its section of the new template; every other line is carried over. Fails when the result would be
// longer than `LineArray::max_text_size`. The blocks are appended to `blocks`, where one is given.
Result<std::string> first_pass(const OldTemplate& oldtemplate, const NewTemplate& newtemplate,
                               const LineArray& galaxylines, Blocks* blocks = nullptr);

// The expansion's fix pass: a block starts only where three lines in a row are recognised, and the
// last two lines are carried over.
Result<std::string> fix_pass(const OldTemplate& oldtemplate, const NewTemplate& newtemplate,
                             const LineArray& galaxylines, Blocks* blocks = nullptr);
