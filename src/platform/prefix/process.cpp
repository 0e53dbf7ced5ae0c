// How the process is set up before anything else happens.
#include "platform/prefix/process.h"

#include <malloc.h>

void keep_freed_memory() {
  constexpr int largest_text = 4 << 20;  // in bytes, for which this is done
  mallopt(M_MMAP_THRESHOLD, largest_text);
  mallopt(M_TRIM_THRESHOLD, 2 * largest_text);
}
