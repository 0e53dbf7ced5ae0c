// Templates from their texts, for tests.
#pragma once

#include "convert/templates.h"

#include <string>

// Lines separated by LF in a test stand for lines of a file.
inline LineArray linesof(const std::string& text) {
  std::string file;
  for (const char c : text)
    file += c == '\n' ? std::string("\r\n") : std::string(1, c);
  return LineArray::split(file);
}

inline OldTemplate oldof(const std::string& text) { return indexold("old.txt", linesof(text)); }
inline NewTemplate newof(const std::string& text) { return indexnew("new.txt", linesof(text)); }
