// Memory for texts: taking it from the system page by page costs more than working on it.
#include "platform/prefix/process.h"

#include <malloc.h>

void keep_freed_memory() {
  constexpr int max_kept = 4 << 20;  // of a text, in bytes
  mallopt(M_MMAP_THRESHOLD, max_kept);
  mallopt(M_TRIM_THRESHOLD, 2 * max_kept);
}
