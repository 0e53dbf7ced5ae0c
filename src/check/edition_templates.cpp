// The templates of a folder, by edition and version.
#include "check/edition_templates.h"

#include "check/sections.h"
#include "engine/numbers.h"
#include "platform/path_rules.h"

#include <regex>
#include <tuple>

namespace {

// What the name of a template says: the letter, old or new, whether it is for the fix pass, and the
// version, of one or two characters. There is no old template for version 0, the baseline's.
std::optional<std::smatch> parse(const std::string& name) {
  static const std::regex pattern("([vt])(?:(old)struct|newstruct)(fix)?(..?)\\.txt",
                                  std::regex::icase);
  std::smatch parts;
  const bool known = std::regex_match(name, parts, pattern) &&
                     !(parts[3].matched && ascii_lower(name[0]) != EditionTemplates::expansion) &&
                     !(parts[2].matched && parts[4] == "0");
  return known ? std::optional(parts) : std::nullopt;
}

EditionTemplates find_edition(char letter, const std::string& folder, const Texts& texts) {
  const auto read = [&](const auto& make, bool old, bool fix, const std::string& version) {
    std::string name = template_name(letter, old, fix, version);
    Result<std::string> text =
        Failure{name, "read it", "the file is missing", Failure::Kind::missing};
    if (const auto found = texts.find(name); found != texts.end())
      std::tie(name, text) = *found;
    const bool joined = folder.empty() || is_separator(folder.back());
    return make(folder + (joined ? "" : "/") + name, std::move(text));
  };
  const auto baseline = [](auto... of) { return Baseline(std::move(of)...); };
  EditionTemplates edition{letter, read(baseline, false, false, "0"), {}, {}};
  for (const auto& [name, text] : texts)
    if (const auto parts = parse(name); parts && ascii_lower(name[0]) == letter) {
      const bool fix = (*parts)[3].matched;
      const std::string version = (*parts)[4];
      if (fix || version != "0")
        (fix ? edition.fixes : edition.pairs)[version] = {read(index_old, true, fix, version),
                                                          read(index_new, false, fix, version)};
    }
  return edition;
}

}  // namespace

bool ByNumber::operator()(const std::string& a, const std::string& b) const {
  return std::make_tuple(numeric_value(a), a) < std::make_tuple(numeric_value(b), b);
}

bool CaseInsensitive::operator()(const std::string& a, const std::string& b) const {
  return lowered(a) < lowered(b);
}

bool Pair::is_readable() const {
  return !old.failure && !current.failure && one_line_fault(old.lines.text()).empty() &&
         one_line_fault(current.lines.text()).empty();
}

const Pair* EditionTemplates::fix() const {
  const auto found = fixes.find(baseline.version ? number_text(*baseline.version) : "");
  return found == fixes.end() ? nullptr : &found->second;
}

std::vector<const Pair*> EditionTemplates::all_pairs() const {
  std::vector<const Pair*> all;
  for (const Pairs* kind : {&pairs, &fixes})
    for (const auto& entry : *kind)
      all.push_back(&entry.second);
  return all;
}

std::vector<const Template*> EditionTemplates::files() const {
  std::vector<const Template*> all{&baseline};
  for (const Pair* pair : all_pairs())
    all.insert(all.end(), {&pair->old, &pair->current});
  std::erase_if(all, [](const Template* file) { return file->failure.has_value(); });
  return all;
}

bool is_template_name(const std::string& name) { return parse(name).has_value(); }

std::string template_name(char letter, bool old, bool fix, const std::string& version) {
  return letter + std::string(old ? "old" : "new") + "struct" + (fix ? "fix" : "") + version +
         ".txt";
}

std::vector<EditionTemplates> find_editions(const std::string& folder, const Texts& texts) {
  std::vector<EditionTemplates> editions;
  for (const char letter : {'v', EditionTemplates::expansion})
    if (EditionTemplates edition = find_edition(letter, folder, texts); !edition.files().empty())
      editions.push_back(std::move(edition));
  return editions;
}
