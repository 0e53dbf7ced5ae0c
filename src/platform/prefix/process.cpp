// Settings of the process: tunes malloc, since page faults on fresh memory cost more than the work
// on a map.
#include "platform/prefix/process.h"

#include <malloc.h>

void keep_freed_memory() {
  constexpr int max_kept = 4 << 20;  // bytes of one text
  mallopt(M_MMAP_THRESHOLD, max_kept);
  mallopt(M_TRIM_THRESHOLD, 2 * max_kept);
}
