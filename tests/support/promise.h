// Folders of maps to lose, and the promise that no map is ever lost.
#pragma once

#include "tests/support/test_machine.h"

#include <string>

// The maps of a folder, each of another content, and what stood beside them: map `i` has no backup,
// an older one of other content (the expansion's in another letter case), or one that holds just
// what it holds.
struct Galaxies {
  std::string edition = "v";
  int count = 3;

  std::string name(int i) const { return "map" + std::to_string(i); }
  std::string old(int i) const;        // the map as it was
  std::string converted(int i) const;  // what the edition makes of it
  std::string backup(int i) const;     // the content of its older backup
  bool has_equal_backup(int i) const { return i % 3 == 2; }

  // Makes the folder anew, with these maps and nothing else.
  void fill(const std::filesystem::path& folder) const;
};

// Whether a map's content is there under one of its backup names.
bool has_backup(const Tree& left, const std::string& name, const std::string& content);

// What is broken in what is left of the folder, empty when the promise holds: each map is there
// under its own name, as it was or converted; as it was it is there under its own or a backup name;
// every older backup is there under a backup name.
std::string broken(const Galaxies& galaxies, const Tree& left);

// The same at the end of a run that had no trouble: besides, every map is converted, and no
// temporary file is left.
std::string unfinished(const Galaxies& galaxies, const Tree& left);
