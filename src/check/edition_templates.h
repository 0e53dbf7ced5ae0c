// The templates of a folder, by edition and version.
#pragma once

#include "check/baseline.h"
#include "check/sections.h"

#include <array>
#include <map>

struct CaseInsensitive {
  bool operator()(std::string_view a, std::string_view b) const { return lowered(a) < lowered(b); }
};

// The templates for the maps of one version, or those of a fix pass. One that is missing has its
// `failure` set.
struct Pair {
  std::string version;  // as the file names have it
  bool is_fix;          // it is for the expansion's fix pass
  OldTemplate old;
  NewTemplate current;

  double number() const { return numeric_value(version); }
  std::array<const Template*, 2> files() const { return {&old, &current}; }

  // Of the two, one that is there.
  const Template& present() const { return *files()[old.failure ? 1 : 0]; }

  // Whether both files are there, and neither counts as one line.
  bool is_readable() const;
};

struct EditionTemplates {
  static constexpr char expansion = 't';

  char letter;  // that its file names begin with
  Baseline baseline;
  std::vector<Pair> pairs;  // by the numbers of their versions

  // The pair for a version, and that of the fix pass that maps go through; null when there is none.
  const Pair* find(bool fix, const std::string& version) const;
  const Pair* fix() const { return find(true, baseline.version_text()); }

  // Whether maps that are older than the current format go through a pair.
  bool uses(const Pair& pair) const {
    return pair.is_fix ? &pair == fix() : pair.number() < baseline.version;
  }

  // The files that are there.
  std::vector<const Template*> files() const;

  // What the baseline shows of maps; null when it shows nothing.
  const Baseline* shown() const { return baseline.shows_map() ? &baseline : nullptr; }

  // Whether maps have what a pair writes. The fix pass changes what is written before it.
  bool is_last(const Pair& pair) const { return letter != expansion || &pair == fix(); }
};

// Whether a file of that name may belong to an edition. Names are case-insensitive.
bool is_template_name(const std::string& name);

// The failure to read a template that is missing. Its path is the template's name.
Failure missing_template(char letter, bool old, bool fix, const std::string& version);

// Sorts the files of a folder, whose texts are given by their names, into the editions that have
// any. Files of other names are ignored. Paths in the result are `folder` and a name.
using Texts = std::map<std::string, std::string, CaseInsensitive>;
std::vector<EditionTemplates> find_editions(const std::string& folder, const Texts& texts);
