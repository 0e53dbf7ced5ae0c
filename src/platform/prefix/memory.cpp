// Memory for large texts: taking it from the system page by page costs more than working on it.
#include "platform/prefix/memory.h"

#include <new>

#include <malloc.h>
#include <sys/mman.h>

void keepmemory() {
  constexpr int largestkept = 4 << 20;  // of a text, in bytes
  mallopt(M_MMAP_THRESHOLD, largestkept);
  mallopt(M_TRIM_THRESHOLD, 2 * largestkept);
}

Pages::Pages(std::size_t size) : memory(nullptr, {size}), length(size) {
  if (size == 0)
    return;
  void* const mapped =
      ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped == MAP_FAILED)
    throw std::bad_alloc();
  memory.reset(static_cast<char*>(mapped));
  // Large pages, and all at once. A system that refuses either hands them over one by one.
  ::madvise(mapped, size, MADV_HUGEPAGE);
  ::madvise(mapped, size, MADV_POPULATE_WRITE);
}

void Pages::Unmap::operator()(char* mapped) const { ::munmap(mapped, size); }
