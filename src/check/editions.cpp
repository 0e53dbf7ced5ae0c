// The templates of a folder, by edition and version.
#include "check/editions.h"

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
                     !(parts[3].matched && ascii_lower(name[0]) != Edition::expansion) &&
                     !(parts[2].matched && parts[4] == "0");
  return known ? std::optional(parts) : std::nullopt;
}

std::string join(const std::string& folder, const std::string& name) {
  return folder + (folder.empty() || is_separator(folder.back()) ? "" : "/") + name;
}

void set_baseline(Edition& edition, const std::string& path, const std::string& text) {
  edition.baseline_file = path;
  edition.baseline.emplace(LineArray::split(text));
  if (const auto version = version_of(edition.baseline->lines[1]); has_number(version))
    edition.version = numeric_value(version);
}

}  // namespace

bool ByNumber::operator()(const std::string& a, const std::string& b) const {
  return std::make_tuple(numeric_value(a), a) < std::make_tuple(numeric_value(b), b);
}

bool CaseInsensitive::operator()(const std::string& a, const std::string& b) const {
  return lowered(a) < lowered(b);
}

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

std::vector<std::pair<std::string, const LineArray*>> Edition::files() const {
  std::vector<std::pair<std::string, const LineArray*>> all;
  if (baseline)
    all.emplace_back(baseline_file, &baseline->lines);
  for (const Pair* pair : all_pairs())
    for (const Template* file : pair->files())
      if (!file->failure)
        all.emplace_back(file->filename, &file->lines);
  return all;
}

bool is_template_name(const std::string& name) { return parse(name).has_value(); }

std::string template_name(char letter, bool old, bool fix, const std::string& version) {
  return letter + std::string(old ? "old" : "new") + "struct" + (fix ? "fix" : "") + version +
         ".txt";
}

std::vector<Edition> find_editions(const std::string& folder, const Texts& texts) {
  std::vector<Edition> editions;
  const auto read = [&](const auto& index, const std::string& name) {
    const auto found = texts.find(name);
    const std::string path = join(folder, found == texts.end() ? name : found->first);
    return found == texts.end() ? index(path, Failure{path, "read it", "the file is missing",
                                                      Failure::Kind::missing})
                                : index(path, found->second);
  };
  for (const char letter : {'v', Edition::expansion}) {
    const std::string zero = join(folder, template_name(letter, false, false, "0"));
    Edition edition{letter, zero, {}, {}, {}, {}};
    for (const auto& [name, text] : texts) {
      const auto parts = parse(name);
      if (!parts || ascii_lower(name[0]) != letter)
        continue;
      const bool fix = (*parts)[3].matched;
      const std::string version = (*parts)[4];
      if (!fix && version == "0")
        set_baseline(edition, join(folder, name), text);
      else
        (fix ? edition.fixes : edition.pairs)[version] = {
            read(index_old, template_name(letter, true, fix, version)),
            read(index_new, template_name(letter, false, fix, version))};
    }
    if (edition.baseline || !edition.all_pairs().empty())
      editions.push_back(std::move(edition));
  }
  return editions;
}
