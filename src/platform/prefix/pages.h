// Memory for a large text.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

// Memory that the system hands over in one piece: for a text of megabytes that is read once, to
// touch new memory page by page takes several times as long as to read the file.
class Pages {
public:
  // That many bytes, all NUL. Throws std::bad_alloc when there are not so many.
  explicit Pages(std::size_t size);

  char* data() { return memory.get(); }
  std::size_t size() const { return length; }
  std::string_view view() const { return {memory.get(), length}; }

  // Makes it a text of fewer bytes.
  void shrink(std::size_t size) { length = size; }

private:
  struct Unmap {
    std::size_t size;
    void operator()(char* mapped) const;
  };

  std::unique_ptr<char, Unmap> memory;
  std::size_t length;
};
