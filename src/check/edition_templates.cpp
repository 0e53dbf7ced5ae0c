// The templates of a folder, by edition and version.
#include "check/edition_templates.h"

#include "platform/path_rules.h"

#include <algorithm>
#include <regex>
#include <tuple>

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

EditionTemplates find_edition(char letter, const std::string& folder, const Texts& texts) {
  const auto read = [&](const auto& make, bool old, bool fix, const std::string& version) {
    std::string name = template_name(letter, old, fix, version);
    Result<std::string> text = missing_template(name);
    if (const auto found = texts.find(name); found != texts.end())
      std::tie(name, text) = *found;
    const bool joined = folder.empty() || is_separator(folder.back());
    return make(folder + (joined ? "" : "/") + name, std::move(text));
  };
  EditionTemplates edition{letter, Baseline(read(index_new, false, false, "0")), {}};
  for (const auto& [name, text] : texts)
    if (const auto parts = parse(name); parts && ascii_lower(name[0]) == letter) {
      const bool fix = (*parts)[1].matched;
      const std::string version = (*parts)[2];
      if ((fix || version != "0") && !edition.find(fix, version))
        edition.pairs.push_back({version, fix, read(index_old, true, fix, version),
                                 read(index_new, false, fix, version)});
    }
  std::ranges::sort(edition.pairs, {},
                    [](const Pair& pair) { return std::pair(pair.number(), pair.version); });
  return edition;
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

std::string template_name(char letter, bool old, bool fix, const std::string& version) {
  const std::string kind = old ? "oldstruct" : "newstruct";
  return letter + kind + (fix ? "fix" : "") + version + ".txt";
}

Failure missing_template(const std::string& name) {
  return {name, "read it", "the file is missing", Failure::Kind::missing};
}

std::vector<EditionTemplates> find_editions(const std::string& folder, const Texts& texts) {
  std::vector<EditionTemplates> editions;
  for (const char letter : {'v', EditionTemplates::expansion})
    if (EditionTemplates edition = find_edition(letter, folder, texts); !edition.files().empty())
      editions.push_back(std::move(edition));
  return editions;
}
