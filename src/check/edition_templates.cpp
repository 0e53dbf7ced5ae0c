// The templates of a folder, by edition and version.
#include "check/edition_templates.h"

#include "platform/path_rules.h"

#include <algorithm>
#include <regex>

namespace {

// What the name of a template says: whether it is for the fix pass, which is the expansion's alone,
// and the version, of one or two characters. There is no old template for version 0, the
// baseline's.
std::optional<std::smatch> parse(const std::string& name) {
  static const std::regex pattern(
      "(?!v...structfix..?\\.|.oldstruct(?:fix)?0\\.)[vt](?:old|new)struct(fix)?(..?)\\.txt",
      std::regex::icase);
  std::smatch parts;
  return std::regex_match(name, parts, pattern) ? std::optional(parts) : std::nullopt;
}

}  // namespace

bool Pair::is_readable() const {
  return std::ranges::all_of(files(), [](const Template* file) {
    return !file->failure && one_line_fault(file->lines).empty();
  });
}

const Pair* EditionTemplates::find(bool fix, const std::string& version) const {
  const auto found = std::ranges::find_if(
      pairs, [&](const Pair& pair) { return pair.is_fix == fix && pair.version == version; });
  return found == pairs.end() ? nullptr : &*found;
}

std::vector<const Template*> EditionTemplates::files() const {
  std::vector<const Template*> all{&baseline};
  for (const Pair& pair : pairs)
    all.insert(all.end(), {&pair.old, &pair.current});
  std::erase_if(all, [](const Template* file) { return file->failure.has_value(); });
  return all;
}

bool is_template_name(const std::string& name) { return parse(name).has_value(); }

Failure missing_template(char letter, bool old, bool fix, const std::string& version) {
  const std::string kind = old ? "oldstruct" : "newstruct";
  const std::string name = letter + kind + (fix ? "fix" : "") + version + ".txt";
  return {name, "read it", "the file is missing", Failure::Kind::missing};
}

std::vector<EditionTemplates> find_editions(const std::string& folder, const Texts& texts) {
  const bool joined = folder.empty() || is_separator(folder.back());
  const auto read = [&](const auto& make, char letter, bool old, bool fix,
                        const std::string& version) {
    const Failure missing = missing_template(letter, old, fix, version);
    std::pair<std::string, Result<std::string>> file(missing.path, missing);
    if (const auto found = texts.find(file.first); found != texts.end())
      file = *found;
    return make(folder + (joined ? "" : "/") + file.first, std::move(file.second));
  };
  std::vector<EditionTemplates> editions;
  for (const char letter : {'v', EditionTemplates::expansion}) {
    EditionTemplates edition{letter, Baseline(read(index_new, letter, false, false, "0")), {}};
    for (const auto& [name, text] : texts)
      if (const auto parts = parse(name); parts && ascii_lower(name[0]) == letter) {
        const bool fix = (*parts)[1].matched;
        const std::string version = (*parts)[2];
        if ((fix || version != "0") && !edition.find(fix, version))
          edition.pairs.push_back({version, fix, read(index_old, letter, true, fix, version),
                                   read(index_new, letter, false, fix, version)});
      }
    std::ranges::sort(edition.pairs, {},
                      [](const Pair& pair) { return std::pair(pair.number(), pair.version); });
    if (!edition.files().empty())
      editions.push_back(std::move(edition));
  }
  return editions;
}
