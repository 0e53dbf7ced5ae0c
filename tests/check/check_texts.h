// Runs the checker on texts instead of files.
#pragma once

#include "check/checker.h"

#include <string>
#include <vector>

// The report on templates, given by their names, and on maps, which are called "a.galaxy",
// "b.galaxy" and so on.
inline std::string check_texts(const Texts& templates, const std::vector<std::string>& maps = {}) {
  Checker checker(find_editions("", templates));
  std::string name = "a.galaxy";
  for (const std::string& map : maps) {
    checker.add({name, LineArray::split(map)}, false);
    ++name[0];
  }
  return checker.finish().report(false);
}
