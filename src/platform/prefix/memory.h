// Memory for large texts: taking it from the system page by page costs more than working on it.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

// Keeps the memory that one map needed for the next. Call it once, before the first map.
void keepmemory();

// Memory that the system hands over in one piece, for a text of megabytes that is read once.
class Pages {
public:
  // That many bytes, all NUL. Throws std::bad_alloc when the system refuses them.
  explicit Pages(std::size_t size);
  Pages(Pages&& other) noexcept
      : memory(std::move(other.memory)), length(std::exchange(other.length, 0)) {}
  Pages& operator=(Pages&& other) noexcept {
    memory = std::move(other.memory);
    length = std::exchange(other.length, 0);
    return *this;
  }

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
