// Memory for texts: taking it from the system page by page costs more than working on it.
#include "platform/prefix/memory.h"

#include <malloc.h>

void keepmemory() {
  constexpr int largestkept = 4 << 20;  // of a text, in bytes
  mallopt(M_MMAP_THRESHOLD, largestkept);
  mallopt(M_TRIM_THRESHOLD, 2 * largestkept);
}
