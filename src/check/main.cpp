// vora-template-check: checks structure templates for those who write them.
#include "check/checker.h"
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

const std::string usage = "usage: vora-template-check [OPTION...] [FOLDER [MAP...]]";
constexpr const char* help =
    "\n\n"
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
    "The exit status is 0 if there are no errors, 1 if there are, and 2 for a wrong\n"
    "argument or a file that cannot be read.\n";

// Larger files are refused.
constexpr std::uintmax_t largest_template = 16 << 20;  // bytes
constexpr std::uintmax_t largest_map = LineArray::max_text_size;

struct Arguments {
  std::map<std::string, std::string> options;  // the values of those that are given
  std::vector<std::string> names;              // the folder, then the maps

  bool has(const char* option) const { return options.contains(option); }
  std::string value(const char* option) const { return has(option) ? options.at(option) : ""; }
};

// Parses the arguments; what is wrong with them, empty if nothing is.
std::string parse(const std::vector<std::string>& given, Arguments& parsed) {
  static const std::map<std::string, bool> takes_value{
      {"--diff", false}, {"--strict", false}, {"-h", false},       {"--help", false},
      {"--trace", true}, {"--edition", true}, {"--explain", true}, {"--version", false}};
  for (auto at = given.begin(); at != given.end(); ++at) {
    const auto equals = std::min(at->find('='), at->size());
    const auto option = takes_value.find(at->substr(0, equals));
    if (at->empty())
      return "an argument is empty";
    if (at->front() != '-') {
      parsed.names.push_back(*at);
    } else if (*at == "--") {
      parsed.names.insert(parsed.names.end(), std::next(at), given.end());
      break;
    } else if (option == takes_value.end() || (equals < at->size() && !option->second)) {
      return "there is no option \"" + *at + "\"";
    } else {
      const bool follows = equals == at->size() && option->second && std::next(at) != given.end();
      const std::string value = follows ? *++at : at->substr(std::min(equals + 1, at->size()));
      if (option->second && value.empty())
        return option->first + " needs a value";
      parsed.options[option->first] = value;
    }
  }
  return "";
}

// What is wrong with the values of arguments; empty if nothing is.
std::string fault_of(const Arguments& arguments) {
  const auto edition = arguments.value("--edition"), rule = arguments.value("--explain");
  if (!edition.empty() && edition != "v" && edition != "t")
    return "there is no edition \"" + edition + "\"";
  if (!rule.empty() && !find_rule(rule))
    return "there is no rule \"" + rule + "\"";
  const bool no_map = arguments.names.size() < 2;
  return arguments.has("--diff") && no_map ? "--diff needs a folder and a map" : "";
}

fs::path path_of(const std::string& name) { return {std::u8string(name.begin(), name.end())}; }

std::string text_of(const fs::path& path) {
  const std::u8string name = path.u8string();
  return {name.begin(), name.end()};
}

// The functions below throw the `Failure` to read what is named.

std::string read(const std::string& name, std::uintmax_t largest) {
  const fs::path path = path_of(name);
  std::error_code error;
  const bool regular = fs::is_regular_file(path, error);
  const std::uintmax_t size = regular ? fs::file_size(path, error) : 0;
  if (size > largest)
    throw Failure{name, "read it", "it is too large"};
  std::ifstream file(path, std::ios::binary);
  std::string text(size, 0);
  file.read(text.data(), static_cast<std::streamsize>(size));
  if (!regular || error || !file)
    throw Failure{name, "read it", "it is missing, no file or not accessible"};
  return text;
}

// The files in a folder whose names fit, and if it is `deep` those in its folders, in order.
template <class Fits>
std::vector<std::string> list(const std::string& folder, bool deep, const Fits& fits,
                              const std::string& what) {
  std::vector<std::string> found;
  std::error_code error, ignored;
  fs::recursive_directory_iterator at(path_of(folder), error);
  for (; !error && at != fs::recursive_directory_iterator(); at.increment(error)) {
    if (fits(text_of(at->path().filename())) && !at->is_directory(ignored))
      found.push_back(text_of(at->path()));
    if (!deep)
      at.disable_recursion_pending();
  }
  if (error)
    throw Failure{folder, "read the folder", error.message()};
  if (found.empty())
    throw Failure{folder, "check it", "there are no " + what + " in it"};
  std::ranges::sort(found);
  return found;
}

// The texts of the templates in a folder.
Texts read_templates(const std::string& folder, const std::string& edition) {
  const auto fits = [&](const std::string& name) {
    return is_template_name(name) && (edition.empty() || ascii_lower(name[0]) == edition[0]);
  };
  Texts texts;
  for (const std::string& path : list(folder, false, fits, "templates"))
    texts[name_of(path)] = read(path, largest_template);
  return texts;
}

// The maps that an argument stands for: a map, those in a folder and its folders, or those with a
// name that has a "*", which the command prompt of Windows leaves to the program.
std::vector<std::string> find_maps(const std::string& argument) {
  const fs::path path = path_of(argument);
  std::error_code error;
  const bool all = fs::is_directory(path, error);
  const std::string name = all ? "*.galaxy" : text_of(path.filename());
  const std::string folder = all ? argument : text_of(path.parent_path());
  const auto star = name.find('*');
  if (star == name.npos || (!all && fs::exists(path, error)))
    return {argument};
  const auto fits = [&](const std::string& file) {
    return file.size() + 1 >= name.size() && file.starts_with(name.substr(0, star)) &&
           matches_pattern(file, name.substr(star));
  };
  return list(folder.empty() ? "." : folder, all, fits, all ? "maps" : "such maps");
}

// Checks the maps that the arguments name; what is to be shown of them behind the findings.
std::string check_maps(const Arguments& arguments, Checker& checker) {
  std::vector<std::string> names = arguments.names;
  names.resize(std::max<std::size_t>(names.size(), 1));
  if (arguments.has("--trace"))
    names.push_back(arguments.value("--trace"));
  std::string shown;
  for (std::size_t i = 1; i < names.size(); ++i)
    for (const std::string& path : find_maps(names[i])) {
      const Map map{path, LineArray::split(read(path, largest_map))};
      const auto run = checker.add(map);
      if (arguments.has("--diff") && run && run->result)
        shown += unified_diff(*run);
      if (names[i] == arguments.value("--trace"))
        shown += run ? trace(*run) : path + ": it is not converted\n";
    }
  return shown;
}

// Checks what the arguments name; whether there are findings that count for the exit status.
bool check(const Arguments& arguments) {
  const std::string folder = arguments.names.empty() ? "" : arguments.names[0];
  Checker checker(find_editions(
      folder, read_templates(folder.empty() ? "." : folder, arguments.value("--edition"))));
  const std::string shown = check_maps(arguments, checker);
  const char *no_colour = std::getenv("NO_COLOR"), *terminal = std::getenv("TERM");
  const bool escape = output_has_colours(), dumb = terminal && std::string_view(terminal) == "dumb";
  const bool colours = escape && !dumb && (!no_colour || !*no_colour);
  if (!print(checker.report(colours) + (escape ? printable_lines(shown) : shown)))
    throw Failure{"standard output", "write the findings", "it is closed or full"};
  return checker.count(Severity::error) > 0 ||
         (arguments.has("--strict") && checker.count(Severity::warning) > 0);
}

int run(const std::vector<std::string>& given) {
  Arguments arguments;
  std::string fault = parse(given, arguments);
  if (fault.empty())
    fault = fault_of(arguments);
  if (!fault.empty()) {
    print_error("vora-template-check: " + fault + "\r\n" + usage);
    return 2;
  }
  if (arguments.has("-h") || arguments.has("--help"))
    return print(usage + help) ? 0 : 2;
  if (arguments.has("--version"))
    return print("vora-template-check " VERSION "\n") ? 0 : 2;
  if (const Rule* rule = find_rule(arguments.value("--explain")))
    return print(explain(*rule)) && print("\n") ? 0 : 2;
  try {
    return check(arguments) ? 1 : 0;
  } catch (const Failure& failure) {
    print_error(failure.text());
    return 2;
  }
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
