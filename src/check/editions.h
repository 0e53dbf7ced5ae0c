// The templates of a folder, by edition and version.
#pragma once

#include "check/baseline.h"
#include "engine/templates.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

// The templates for the maps of one version, or those of a fix pass. One that is missing has its
// `failure` set.
struct Pair {
  OldTemplate old;
  NewTemplate current;

  // Whether both files are there, and neither counts as one line.
  bool is_readable() const;
};
using Pairs = std::map<std::string, Pair>;  // by the version, as the file names have it

struct Edition {
  static constexpr char expansion = 't';

  char letter;                // that its file names begin with
  std::string baseline_file;  // its path
  std::optional<Baseline> baseline;
  std::optional<double> version;  // the current one
  Pairs pairs;
  Pairs fixes;  // the expansion's

  // The pair of the fix pass that maps go through; null when there is none.
  const Pair* fix() const;

  // Those of both kinds.
  std::vector<const Pair*> all_pairs() const;

  // Whether the baseline shows what maps have that a pair has written. The fix pass changes what is
  // written before it.
  bool shows(const Pair& pair) const {
    return baseline && baseline->shows_map() && (letter != expansion || &pair == fix());
  }
};

// Whether a file of that name may belong to an edition. Names are case-insensitive.
bool is_template_name(const std::string& name);

// The name of a template.
std::string template_name(char letter, bool old, bool fix, const std::string& version);

// Sorts the files of a folder, whose texts are given by their names, into the editions that have
// any. Files of other names are ignored. Paths in the result are `folder` and a name.
using Texts = std::map<std::string, std::string>;
std::vector<Edition> find_editions(const std::string& folder, const Texts& texts);
