// The templates of a folder, by edition and version.
#include "check/editions.h"

#include "check/sections.h"
#include "engine/numbers.h"
#include "platform/path_rules.h"

#include <regex>

namespace {

// What the name of a template says: the letter, old or new, whether it is for the fix pass, and the
// version, of one or two characters. There is no old template for version 0, the baseline's.
std::optional<std::smatch> parse(const std::string& name) {
  static const std::regex pattern("([vt])(?:(old)struct|newstruct)(fix)?(..?)\\.txt",
                                  std::regex::icase);
  std::smatch parts;
  const bool known = std::regex_match(name, parts, pattern) &&
                     !(parts[3].matched && ascii_lower(name[0]) != Edition::expansion) &&
                     !(parts[2].matched && parts[4] == "0");
  return known ? std::optional(parts) : std::nullopt;
}

std::string join(const std::string& folder, const std::string& name) {
  return folder + (folder.empty() || is_separator(folder.back()) ? "" : "/") + name;
}

Failure missing(const std::string& path) { return {path, "read it", "the file is missing", true}; }

void set_baseline(Edition& edition, const std::string& path, const std::string& text) {
  edition.baseline_file = path;
  edition.baseline.emplace(LineArray::split(text));
  const auto version = version_of(edition.baseline->lines[1]);
  if (has_number(version))
    edition.version = numeric_value(version);
}

void add_template(Edition& edition, const std::string& folder, const std::string& name,
                  const std::string& text) {
  const std::smatch parts = *parse(name);
  const bool old = parts[2].matched, fix = parts[3].matched;
  const std::string version = parts[4], path = join(folder, name);
  if (!old && !fix && version == "0")
    return set_baseline(edition, path, text);
  const auto [at, added] = (fix ? edition.fixes : edition.pairs).try_emplace(version);
  const auto other = join(folder, template_name(edition.letter, !old, fix, version));
  if (old || added)
    at->second.old = old ? index_old(path, text) : index_old(other, missing(other));
  if (!old || added)
    at->second.current = old ? index_new(other, missing(other)) : index_new(path, text);
}

}  // namespace

bool Pair::is_readable() const {
  return !old.failure && !current.failure && !is_one_line(old.lines.text()) &&
         !is_one_line(current.lines.text());
}

const Pair* Edition::fix() const {
  const auto found = fixes.find(version ? number_text(*version) : "");
  return found == fixes.end() ? nullptr : &found->second;
}

std::vector<const Pair*> Edition::all_pairs() const {
  std::vector<const Pair*> all;
  for (const Pairs* kind : {&pairs, &fixes})
    for (const auto& entry : *kind)
      all.push_back(&entry.second);
  return all;
}

bool is_template_name(const std::string& name) { return parse(name).has_value(); }

std::string template_name(char letter, bool old, bool fix, const std::string& version) {
  return letter + std::string(old ? "old" : "new") + "struct" + (fix ? "fix" : "") + version +
         ".txt";
}

std::vector<Edition> find_editions(const std::string& folder, const Texts& texts) {
  std::vector<Edition> editions;
  for (const char letter : {'v', Edition::expansion}) {
    Edition edition{letter, join(folder, template_name(letter, false, false, "0")), {}, {}, {}, {}};
    for (const auto& [name, text] : texts)
      if (is_template_name(name) && ascii_lower(name[0]) == letter)
        add_template(edition, folder, name, text);
    if (edition.baseline || !edition.pairs.empty() || !edition.fixes.empty())
      editions.push_back(std::move(edition));
  }
  return editions;
}
