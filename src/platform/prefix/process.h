// Settings of the process: tunes malloc, since page faults on fresh memory cost more than the work
// on a map.
#pragma once

// Makes malloc keep the freed memory of one map for the next. Call it once, before the first map.
void keep_freed_memory();
