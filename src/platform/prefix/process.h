// How the process is set up before anything else happens.
#pragma once

// Keeps freed memory in the process, so that the next map reuses it: getting memory from the system
// page by page costs more than converting a map. Call it once, before the first map.
void keep_freed_memory();
