// The templates of a folder, by edition and version.
#include "check/editions.h"

#include "engine/numbers.h"
#include "platform/path_rules.h"

#include <algorithm>

namespace {

constexpr std::string_view letters = "vt";

// What the name of a template says.
struct Name {
  char letter;
  bool old;
  bool fix;
  std::string version;

  bool baseline() const { return !old && !fix && version == "0"; }
};

std::string file_name(const Name& name) {
  return name.letter + std::string(name.old ? "oldstruct" : "newstruct") + (name.fix ? "fix" : "") +
         name.version + ".txt";
}

bool skip(std::string_view& text, std::string_view start) {
  const bool there = text.starts_with(start);
  text.remove_prefix(there ? start.size() : 0);
  return there;
}

// Names are case-insensitive. A version has one or two characters.
std::optional<Name> parse(std::string_view file) {
  std::string lower;
  std::transform(file.begin(), file.end(), std::back_inserter(lower), ascii_lower);
  std::string_view rest = lower;
  if (rest.empty() || letters.find(rest[0]) == letters.npos || !rest.ends_with(".txt"))
    return std::nullopt;
  rest.remove_suffix(4);
  Name name{rest[0], false, false, ""};
  rest.remove_prefix(1);
  name.old = skip(rest, "oldstruct");
  if (!name.old && !skip(rest, "newstruct"))
    return std::nullopt;
  name.fix = name.letter == expansion && skip(rest, "fix");
  name.version = rest;
  const bool known = rest.size() == 1 || rest.size() == 2;
  return known && (!name.old || rest != "0") ? std::optional(name) : std::nullopt;
}

std::string join(const std::string& folder, const std::string& name) {
  const bool plain = folder.empty() || folder.back() == '/' || folder.back() == '\\';
  return folder + (plain ? "" : "/") + name;
}

Result<std::string> missing(const std::string& path) {
  return Failure{path, "read it", "the file is missing", true};
}

void set_baseline(Edition& edition, std::string path, const std::string& text) {
  edition.baseline = std::move(path);
  edition.baseline_lines = LineArray::split(text);
  const auto version = version_of((*edition.baseline_lines)[1]);
  if (has_number(version))
    edition.version = numeric_value(version);
}

// The pair of that version, with both templates missing if it is new.
Pair& pair_of(Edition& edition, const std::string& folder, Name name) {
  Pairs& pairs = name.fix ? edition.fixes : edition.pairs;
  const auto [at, added] = pairs.try_emplace(name.version);
  if (added) {
    for (const bool old : {false, true}) {
      name.old = old;
      const std::string path = join(folder, file_name(name));
      if (old)
        at->second.old = index_old(path, missing(path));
      else
        at->second.current = index_new(path, missing(path));
    }
  }
  return at->second;
}

void add_template(Edition& edition, const std::string& folder, const Name& name, std::string path,
                  const std::string& text) {
  if (name.baseline())
    return set_baseline(edition, std::move(path), text);
  Pair& pair = pair_of(edition, folder, name);
  if (name.old)
    pair.old = index_old(std::move(path), text);
  else
    pair.current = index_new(std::move(path), text);
}

}  // namespace

const Pair* Edition::fix() const {
  const auto found = fixes.find(version ? number_text(*version) : "");
  return found == fixes.end() ? nullptr : &found->second;
}

std::vector<Edition> find_editions(const std::string& folder, const Texts& texts) {
  std::vector<Edition> editions;
  for (const char letter : letters) {
    const Name baseline{letter, false, false, "0"};
    Edition edition{letter, join(folder, file_name(baseline)), {}, {}, {}, {}};
    for (const auto& [file, text] : texts)
      if (const auto name = parse(file); name && name->letter == letter)
        add_template(edition, folder, *name, join(folder, file), text);
    if (edition.baseline_lines || !edition.pairs.empty() || !edition.fixes.empty())
      editions.push_back(std::move(edition));
  }
  return editions;
}

bool is_template_name(std::string_view name) { return parse(name).has_value(); }

std::string pair_names(char letter, const std::string& version, bool fix) {
  return file_name({letter, true, fix, version}) + ", " + file_name({letter, false, fix, version});
}
