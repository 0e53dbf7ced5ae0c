// vora-template-check: checks structure templates for those who write them.
#include "check/checker.h"
#include "check/trace.h"
#include "check/unified_diff.h"
#include "platform/console.h"
#include "platform/path_rules.h"
#include "platform/printable.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <map>

namespace fs = std::filesystem;

namespace {

const std::string usage = "usage: vora-template-check [OPTION...] [FOLDER [MAP...]]\n";
constexpr const char* help =
    "\n"
    "Checks the structure templates in FOLDER, the current folder by default. Each MAP\n"
    "is converted in memory, and what happens to it is checked, too; a folder stands for\n"
    "the maps in it. Nothing is written.\n"
    "\n"
    "  --diff           show what the conversion changes, as a unified diff\n"
    "  --trace MAP      show what happens to each line of a map\n"
    "  --edition v|t    check the templates of the base game or of Tarnfall only\n"
    "  --strict         warnings count for the exit status, too\n"
    "  --explain RULE   show what a rule finds\n"
    "  -h, --help       show this text\n"
    "  --version        show the version\n"
    "\n"
    "Findings are FILE:LINE: error|warning: TEXT [RULE]. A map is of the edition whose\n"
    "baseline begins with the same line, or whose old templates do where no baseline\n"
    "does; others are counted, but not checked. The exit status is 0 if there are no\n"
    "errors, 1 if there are, and 2 for a wrong argument or a file that cannot be read.\n";

// Larger files are refused.
constexpr std::uintmax_t largest_template = 16 << 20;  // bytes
constexpr std::uintmax_t largest_map = LineArray::max_text_size;

// The options, and whether they need a value.
const std::map<std::string, bool> known_options{
    {"--diff", false},   {"--edition", true}, {"--explain", true}, {"--help", false},
    {"--strict", false}, {"--trace", true},   {"--version", false}};

struct Options {
  std::map<std::string, std::string> given;  // with their values, or "yes"
  std::vector<std::string> names;            // the folder, then the maps

  bool has(const std::string& option) const { return given.contains(option); }
  std::string value(const std::string& option) const { return has(option) ? given.at(option) : ""; }
};

// What is wrong with the options; empty if nothing is.
std::string fault_of(const Options& options) {
  const std::string edition = options.value("--edition"), rule = options.value("--explain");
  if (!edition.empty() && edition != "v" && edition != "t")
    return "there is no edition \"" + edition + "\"";
  if (!rule.empty() && !find_rule(rule))
    return "there is no rule \"" + rule + "\"";
  return options.has("--diff") && options.names.size() < 2 ? "--diff needs a folder and a map" : "";
}

// Sets the options; what is wrong with the arguments, empty if nothing is.
std::string parse(const std::vector<std::string>& arguments, Options& options) {
  bool only_names = false;
  for (auto at = arguments.begin(); at != arguments.end(); ++at) {
    const std::string& argument = *at;
    if (argument.empty())
      return "an argument is empty";
    if (only_names || argument[0] != '-') {
      options.names.push_back(argument);
      continue;
    }
    only_names = argument == "--";
    if (only_names)
      continue;
    const auto equals = std::min(argument.find('='), argument.size());
    const std::string name = argument == "-h" ? "--help" : argument.substr(0, equals);
    const auto option = known_options.find(name);
    if (option == known_options.end() || (!option->second && equals < argument.size()))
      return "there is no option \"" + argument + "\"";
    std::string value = option->second ? "" : "yes";
    if (equals < argument.size())
      value = argument.substr(equals + 1);
    else if (option->second && std::next(at) != arguments.end())
      value = *++at;
    if (value.empty())
      return name + " needs a value";
    options.given[name] = value;
    if (options.has("--help") || options.has("--version"))
      return "";
  }
  return fault_of(options);
}

fs::path path_of(const std::string& name) { return {std::u8string(name.begin(), name.end())}; }

std::string text_of(const fs::path& path) {
  const std::u8string name = path.u8string();
  return {name.begin(), name.end()};
}

Result<std::string> read(const std::string& name, std::uintmax_t largest) {
  const fs::path path = path_of(name);
  std::error_code error;
  const bool regular = fs::is_regular_file(path, error);
  const std::uintmax_t size = regular ? fs::file_size(path, error) : 0;
  if (size > largest)
    return Failure{name, "read it", "it is too large"};
  std::ifstream file(path, std::ios::binary);
  std::string text(size, 0);
  file.read(text.data(), static_cast<std::streamsize>(size));
  if (!regular || error || !file)
    return Failure{name, "read it", "it is missing, no file or not accessible"};
  return text;
}

// The files that `Iterator` visits in a folder and whose names fit, in order.
template <class Iterator, class Fits>
Result<std::vector<std::string>> list(const std::string& folder, const Fits& fits,
                                      const char* what) {
  std::vector<std::string> found;
  std::error_code error;
  for (Iterator at(path_of(folder), error); !error && at != Iterator(); at.increment(error))
    if (std::error_code ignored; fits(text_of(at->path().filename())) && !at->is_directory(ignored))
      found.push_back(text_of(at->path()));
  if (error || found.empty())
    return error ? Failure{folder, "read the folder", error.message()}
                 : Failure{folder, "check it", std::string("there are no ") + what + " in it"};
  std::ranges::sort(found);
  return found;
}

// The texts of the templates in a folder.
Result<Texts> read_templates(const std::string& folder, const std::string& edition) {
  const auto fits = [&](const std::string& name) {
    return is_template_name(name) && (edition.empty() || ascii_lower(name[0]) == edition[0]);
  };
  const auto paths = list<fs::directory_iterator>(folder, fits, "templates");
  if (!paths)
    return paths.failure();
  Texts texts;
  for (const std::string& path : *paths) {
    auto text = read(path, largest_template);
    if (!text)
      return text.failure();
    texts[name_of(path)] = *std::move(text);
  }
  return texts;
}

// The maps that an argument stands for: a map, those in a folder and its folders, or those with a
// name that has a "*", which the command prompt of Windows leaves to the program.
Result<std::vector<std::string>> find_maps(const std::string& argument) {
  const fs::path path = path_of(argument);
  const std::string name = text_of(path.filename()), folder = text_of(path.parent_path());
  const auto star = name.find('*');
  std::error_code error;
  if (fs::is_directory(path, error))
    return list<fs::recursive_directory_iterator>(
        argument, [](const std::string& file) { return matches_pattern(file, "*.galaxy"); },
        "maps");
  if (star == name.npos || fs::exists(path, error))
    return std::vector{argument};
  const auto fits = [&](const std::string& file) {
    return file.size() + 1 >= name.size() && file.starts_with(name.substr(0, star)) &&
           matches_pattern(file, name.substr(star));
  };
  return list<fs::directory_iterator>(folder.empty() ? "." : folder, fits, "such maps");
}

// A text for a terminal, whose lines and tabs stay. No line of a map may disturb it.
std::string for_terminal(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const auto end = std::min(text.find_first_of("\t\n"), text.size());
    const bool cr = text.substr(0, end).ends_with('\r') && text.substr(end).starts_with('\n');
    shown.append(printable(text.substr(0, end - (cr ? 1 : 0)))).append(text.substr(end, 1));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return shown;
}

// Checks the maps that the options name; what is to be shown of them behind the findings.
Result<std::string> check_maps(const Options& options, Checker& checker) {
  const std::string traced = options.value("--trace");
  std::vector<std::string> arguments(options.names.begin() + (options.names.empty() ? 0 : 1),
                                     options.names.end());
  if (!traced.empty())
    arguments.push_back(traced);
  std::string shown;
  for (const std::string& argument : arguments) {
    const auto maps = find_maps(argument);
    for (std::size_t i = 0; maps && i < maps->size(); ++i) {
      auto text = read((*maps)[i], largest_map);
      if (!text)
        return text.failure();
      const Map map{(*maps)[i], LineArray::split(*std::move(text))};
      const auto run = checker.add(map);
      if (options.has("--diff") && run && run->result)
        shown += unified_diff(*run);
      if (argument == traced)
        shown += run ? trace(*run) : argument + ": it is not converted\n";
    }
    if (!maps)
      return maps.failure();
  }
  return shown;
}

// Checks what the options name. The exit status, or what could not be read or written.
Result<int> check(const Options& options) {
  const std::string folder = options.names.empty() ? "" : options.names[0];
  const auto texts = read_templates(folder.empty() ? "." : folder, options.value("--edition"));
  if (!texts)
    return texts.failure();
  Checker checker(find_editions(folder, *texts));
  const auto shown = check_maps(options, checker);
  if (!shown)
    return shown.failure();
  const char *no_colour = std::getenv("NO_COLOR"), *terminal = std::getenv("TERM");
  const bool escape = output_has_colours(), dumb = terminal && std::string_view(terminal) == "dumb";
  const bool colours = escape && !dumb && (!no_colour || !*no_colour);
  if (!print(checker.report(colours) + (escape ? for_terminal(*shown) : *shown)))
    return Failure{"standard output", "write the findings", "it is closed or full"};
  const bool strict_fault = options.has("--strict") && checker.count(Severity::warning) > 0;
  return checker.count(Severity::error) > 0 || strict_fault ? 1 : 0;
}

int run(const std::vector<std::string>& arguments) {
  Options options;
  if (const std::string fault = parse(arguments, options); !fault.empty()) {
    print_error("vora-template-check: " + printable(fault) + "\n" + usage);
    return 2;
  }
  if (options.has("--help"))
    return print(usage + help) ? 0 : 2;
  if (options.has("--version"))
    return print("vora-template-check " VERSION "\n") ? 0 : 2;
  if (const Rule* rule = find_rule(options.value("--explain")))
    return print(explain(*rule)) && print("\n") ? 0 : 2;
  const auto status = check(options);
  if (!status)
    print_error(printable(status.failure().text()) + "\n");
  return status ? *status : 2;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(command_line(argc, argv));
  } catch (const std::exception& error) {  // out of memory, or a name that is no UTF-8 on Windows
    std::fprintf(stderr, "vora-template-check: %s\n", error.what());
    return 2;
  }
}
