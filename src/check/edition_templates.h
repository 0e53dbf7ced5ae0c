// The templates of a folder, by edition and version.
#pragma once

#include "check/baseline.h"

#include <array>
#include <map>

// Orders versions by their numbers, and those of the same number as text.
struct ByNumber {
  bool operator()(const std::string& a, const std::string& b) const;
};

struct CaseInsensitive {
  bool operator()(const std::string& a, const std::string& b) const;
};

// The templates for the maps of one version, or those of a fix pass. One that is missing has its
// `failure` set.
struct Pair {
  OldTemplate old;
  NewTemplate current;

  std::array<const Template*, 2> files() const { return {&old, &current}; }

  // Of the two, one that is there.
  const Template& present() const { return *files()[old.failure ? 1 : 0]; }

  // Whether both files are there, and neither counts as one line.
  bool is_readable() const;
};
using Pairs = std::map<std::string, Pair, ByNumber>;  // by the version, as the file names have it

struct EditionTemplates {
  static constexpr char expansion = 't';

  char letter;  // that its file names begin with
  Baseline baseline;
  Pairs pairs;
  Pairs fixes;  // the expansion's

  // The pair of the fix pass that maps go through; null when there is none.
  const Pair* fix() const;

  // Those of both kinds.
  std::vector<const Pair*> all_pairs() const;

  // The files that are there.
  std::vector<const Template*> files() const;

  // What the baseline shows of maps; null when it shows nothing.
  const Baseline* shown() const { return baseline.shows_map() ? &baseline : nullptr; }

  // Whether maps have what a pair writes. The fix pass changes what is written before it.
  bool is_last(const Pair& pair) const { return letter != expansion || &pair == fix(); }
};

// Whether a file of that name may belong to an edition. Names are case-insensitive.
bool is_template_name(const std::string& name);

// The name of a template.
std::string template_name(char letter, bool old, bool fix, const std::string& version);

// Sorts the files of a folder, whose texts are given by their names, into the editions that have
// any. Files of other names are ignored. Paths in the result are `folder` and a name.
using Texts = std::map<std::string, std::string, CaseInsensitive>;
std::vector<EditionTemplates> find_editions(const std::string& folder, const Texts& texts);
