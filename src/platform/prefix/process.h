// Memory for texts: taking it from the system page by page costs more than working on it.
#pragma once

// Keeps the memory that one map needed for the next. Call it once, before the first map.
void keep_freed_memory();
