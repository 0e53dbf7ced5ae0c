// Structure templates: what the program knows about how a map of an older format version differs
// from the current one. `docs/templates.md` describes the files.
#pragma once

#include "convert/prefixindex.h"
#include "form/linearray.h"
#include "platform/files.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What the end of an output line asks for.
enum class Marker {
  none,            // the line as it stands
  last_character,  // " #": the last character of the aligned map line
  last_two,        // "##": its last two characters
  rest,            // " &": the block's first line from a position on
  dropped,         // any other "#" or "&" at the end: no line at all
};

struct OutputLine {
  std::string_view text;  // without what the marker replaces
  Marker marker;
};

// The parts that every template has. A file that is missing or cannot be read gives 11 empty lines,
// and `failure` says why.
struct Template {
  std::string filename;
  LineArray lines;
  std::optional<Failure> failure;
  std::vector<std::size_t> heads{0};  // the lines of the section headers, or a single 0
  std::vector<long long> counts;      // the whole part of each header's count
};

// An old-format template with what it recognises.
struct OldTemplate : Template {
  PrefixIndex index;                    // its lines by their numbers
  std::vector<std::uint32_t> sections;  // of its lines: see `sectionof`
};

// A new-format template with what it writes.
struct NewTemplate : Template {
  std::vector<OutputLine> output;  // one for each line of the file
};

// A template is made from its text, or from the failure to read it.
OldTemplate index_old(std::string filename, Result<std::string> text);
NewTemplate index_new(std::string filename, Result<std::string> text);

// The templates of one conversion run. Files are read anew at each call; what is derived from them
// is made anew only when their bytes have changed.
class Templates {
public:
  // `letter` is the edition's: it begins the files' names.
  Templates(Files& machine, std::string letter) : files(machine), edition(std::move(letter)) {}

  // Loads a template of the version `ver`, as a text.
  void loadold(std::string_view ver);
  void loadnew(std::string_view ver);

  // Loads a template of the expansion's fix pass.
  void loadoldfix(double ver);
  void loadnewfix(double ver);

  // Reads the current format version from the baseline: 0 when it has no second line. Fails, with
  // the same 0, when it is missing or cannot be read.
  Result<double> initnew();

  const OldTemplate& oldtemplate() const { return *current_old; }
  const NewTemplate& newtemplate() const { return *current_new; }

private:
  Files& files;
  std::string edition;
  std::map<std::string, OldTemplate> loaded_old;
  std::map<std::string, NewTemplate> loaded_new;
  const OldTemplate* current_old = nullptr;
  const NewTemplate* current_new = nullptr;
};

// The number at the end of a map's or the baseline's second line: its last two characters, or the
// last alone when a space stands before it.
std::string_view version_of(std::string_view second_line);
