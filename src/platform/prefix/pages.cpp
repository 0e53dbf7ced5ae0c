// Memory for a large text.
#include "platform/prefix/pages.h"

#include <new>

#include <sys/mman.h>

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
