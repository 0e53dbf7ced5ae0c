// vora-template-check: checks structure templates for those who write them.
#include "check/checker.h"
#include "platform/console.h"
#include "platform/path_rules.h"
#include "platform/printable.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

const std::string usage = "usage: vora-template-check [OPTION...] [FOLDER [MAP...]]";
constexpr const char* help = R"(

Checks the structure templates in FOLDER, the current folder by default. Each MAP
is converted in memory, and what happens to it is checked, too; a folder stands for
the maps in it. Nothing is written.

  --diff           show what the conversion changes, as a unified diff
  --trace MAP      show what happens to each line of a map
  --edition v|t    check the templates of the base game or of Tarnfall only
  --strict         warnings count for the exit status, too
  --explain RULE   show what a rule finds
  -h, --help       show this text
  --version        show the version

The exit status is 0 if there are no errors, 1 if there are, and 2 for a wrong
argument or a file that cannot be read.
)";

// Larger files are refused.
constexpr std::uintmax_t largest_template = 16 << 20;  // bytes
constexpr std::uintmax_t largest_map = LineArray::max_text_size;

struct Arguments {
  std::map<std::string, std::string> options;  // the values of those that are given
  std::vector<std::string> names;              // the folder, empty for the current one; the maps

  bool has(const char* option) const { return options.contains(option); }
  std::string value(const char* option) const { return has(option) ? options.at(option) : ""; }
};

// Parses the arguments. Throws what is wrong with them as a `std::invalid_argument`.
Arguments parse(const std::vector<std::string>& given) {
  static const std::set<std::string> flags{"--diff", "--strict", "-h", "--help", "--version"};
  static const std::set<std::string> with_value{"--trace", "--edition", "--explain"};
  Arguments parsed;
  for (auto at = given.begin(); at != given.end(); ++at) {
    const std::string option = at->substr(0, at->find('='));
    if (at->empty())
      throw std::invalid_argument("an argument is empty");
    if (at->front() != '-') {
      parsed.names.push_back(*at);
    } else if (*at == "--") {
      parsed.names.insert(parsed.names.end(), std::next(at), given.end());
      break;
    } else if (flags.contains(*at)) {
      parsed.options[*at] = "";
    } else if (!with_value.contains(option)) {
      throw std::invalid_argument("there is no option \"" + *at + "\"");
    } else {
      const bool inside = option.size() < at->size(), last = std::next(at) == given.end();
      parsed.options[option] = inside ? at->substr(option.size() + 1) : last ? "" : *++at;
      if (parsed.options[option].empty())
        throw std::invalid_argument(option + " needs a value");
    }
  }
  if (parsed.names.empty())
    parsed.names.push_back("");
  const auto edition = parsed.value("--edition"), rule = parsed.value("--explain");
  if (!edition.empty() && edition != "v" && edition != "t")
    throw std::invalid_argument("there is no edition \"" + edition + "\"");
  if (!rule.empty() && !find_rule(rule))
    throw std::invalid_argument("there is no rule \"" + rule + "\"");
  if (parsed.has("--diff") && parsed.names.size() < 2)
    throw std::invalid_argument("--diff needs a folder and a map");
  return parsed;
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
  const std::uintmax_t size = fs::file_size(path, error);
  if (!error && size > largest)
    throw Failure{name, "read it", "it is too large"};
  std::string text(error ? 0 : size, 0);
  std::ifstream file(path, std::ios::binary);
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (error || !file)
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

// Does what the arguments ask for; the exit status.
int run(const Arguments& arguments) {
  if (arguments.has("-h") || arguments.has("--help"))
    return print(usage + help) ? 0 : 2;
  if (arguments.has("--version"))
    return print("vora-template-check " VERSION "\n") ? 0 : 2;
  if (const Rule* rule = find_rule(arguments.value("--explain")))
    return print(explain(*rule)) && print("\n") ? 0 : 2;
  const std::string& folder = arguments.names[0];
  Checker checker(find_editions(
      folder, read_templates(folder.empty() ? "." : folder, arguments.value("--edition"))));
  const std::string shown = check_maps(arguments, checker);
  const char *no_colour = std::getenv("NO_COLOR"), *terminal = std::getenv("TERM");
  const bool escape = output_has_colours(), dumb = terminal && std::string_view(terminal) == "dumb";
  const bool colours = escape && !dumb && (!no_colour || !*no_colour);
  if (!print(checker.report(colours) + (escape ? printable_lines(shown) : shown)))
    throw Failure{"standard output", "write the findings", "it is closed or full"};
  const std::size_t warnings = arguments.has("--strict") ? checker.count(Severity::warning) : 0;
  return checker.count(Severity::error) + warnings > 0 ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(parse(command_line(argc, argv)));
  } catch (const std::invalid_argument& fault) {
    print_error("vora-template-check: " + std::string(fault.what()) + "\r\n" + usage);
  } catch (const Failure& failure) {
    print_error(failure.text());
  } catch (const std::exception& error) {  // out of memory, or a name that is no UTF-8 on Windows
    std::fprintf(stderr, "vora-template-check: %s\n", error.what());
  }
  return 2;
}
