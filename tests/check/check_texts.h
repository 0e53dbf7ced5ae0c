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
    const Map lines{name, LineArray::split(map)};
    static_cast<void>(checker.add(lines));
    ++name[0];
  }
  return checker.report(false);
}

// What is found, without the last line, which says what was checked.
inline std::string found_in_texts(const Texts& templates,
                                  const std::vector<std::string>& maps = {}) {
  const std::string report = check_texts(templates, maps);
  const auto last = report.rfind('\n', report.size() - 2);
  return last == report.npos ? "no findings\n" : report.substr(0, last + 1);
}
