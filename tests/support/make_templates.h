// Templates from their texts, for tests.
#pragma once

#include "engine/templates.h"

#include <string>

// Lines separated by LF in a test stand for lines of a file.
inline std::string file_of(const std::string& text) {
  std::string file;
  for (const char c : text)
    file += c == '\n' ? std::string("\r\n") : std::string(1, c);
  return file;
}

inline LineArray lines_of(const std::string& text) { return LineArray::split(file_of(text)); }
inline OldTemplate old_of(const std::string& text) { return index_old("old.txt", file_of(text)); }
inline NewTemplate new_of(const std::string& text) { return index_new("new.txt", file_of(text)); }
