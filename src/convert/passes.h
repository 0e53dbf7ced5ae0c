// The two passes that turn the lines of a map into its text in the new format. They open no file.
#pragma once

#include "convert/rewriting.h"

#include <string>

// The first pass: every line that the old template recognises starts a block, which gives way to
// its section of the new template; every other line is carried over.
Result<std::string, TemplateError> first_pass(const OldTemplate& oldtemplate,
                                              const NewTemplate& newtemplate,
                                              const LineArray& galaxylines);

// The expansion's fix pass: a block starts only where three lines in a row are recognised, and the
// last two lines are carried over.
Result<std::string, TemplateError> fix_pass(const OldTemplate& oldtemplate,
                                            const NewTemplate& newtemplate,
                                            const LineArray& galaxylines);
