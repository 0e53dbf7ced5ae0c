// The rules about templates alone. Each finds one kind of mistake; docs/templates.md describes them
// by the names that their findings bear.
#pragma once

#include "check/editions.h"
#include "check/finding.h"

// About the files of an edition.
void line_ends(const Edition& edition, Findings& findings);
void missing_pair(const Edition& edition, Findings& findings);
void no_version(const Edition& edition, Findings& findings);

// About a pair of which both files are there and have lines.
void section_count(const Edition& edition, const Pair& pair, Findings& findings);
void section_order(const Edition& edition, const Pair& pair, Findings& findings);
void count_past_end(const Edition& edition, const Pair& pair, Findings& findings);
void count_too_small(const Edition& edition, const Pair& pair, Findings& findings);
void bad_count(const Edition& edition, const Pair& pair, Findings& findings);
void empty_line(const Edition& edition, const Pair& pair, Findings& findings);
void shadowed(const Edition& edition, const Pair& pair, Findings& findings);
void dead_marker(const Edition& edition, const Pair& pair, Findings& findings);
void block_overlap(const Edition& edition, const Pair& pair, Findings& findings);
