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
    "Findings are FILE:LINE: error|warning: TEXT [RULE]. A map is of the edition whose\n"
    "baseline begins with the same line, or whose old templates do where no baseline\n"
    "does; others are counted, but not checked. The exit status is 0 if there are no\n"
    "errors, 1 if there are, and 2 for a wrong argument or a file that cannot be read.\n";

// Larger files are refused.
constexpr std::uintmax_t largest_template = 16 << 20;  // bytes
constexpr std::uintmax_t largest_map = LineArray::max_text_size;

struct Options {
  bool diff = false, strict = false, help = false, version = false;
  std::string edition, explain, trace;
  std::vector<std::string> names;  // the folder, then the maps
};

// Sets the options; what is wrong with the arguments, empty if nothing is.
std::string parse(const std::vector<std::string>& arguments, Options& options) {
  const std::map<std::string, bool*> switches{{"--diff", &options.diff},
                                              {"--strict", &options.strict},
                                              {"-h", &options.help},
                                              {"--help", &options.help},
                                              {"--version", &options.version}};
  const std::map<std::string, std::string*> values{{"--edition", &options.edition},
                                                   {"--explain", &options.explain},
                                                   {"--trace", &options.trace}};
  for (auto at = arguments.begin(); at != arguments.end(); ++at) {
    const auto equals = std::min(at->find('='), at->size());
    const auto value = values.find(at->substr(0, equals));
    if (at->empty())
      return "an argument is empty";
    if (at->front() != '-') {
      options.names.push_back(*at);
    } else if (*at == "--") {
      options.names.insert(options.names.end(), std::next(at), arguments.end());
      break;
    } else if (const auto known = switches.find(*at); known != switches.end()) {
      *known->second = true;
    } else if (value == values.end()) {
      return "there is no option \"" + *at + "\"";
    } else {
      if (equals < at->size())
        *value->second = at->substr(equals + 1);
      else if (std::next(at) != arguments.end())
        *value->second = *++at;
      if (value->second->empty())
        return value->first + " needs a value";
    }
  }
  if (!options.edition.empty() && options.edition != "v" && options.edition != "t")
    return "there is no edition \"" + options.edition + "\"";
  if (!options.explain.empty() && !find_rule(options.explain))
    return "there is no rule \"" + options.explain + "\"";
  return options.diff && options.names.size() < 2 ? "--diff needs a folder and a map" : "";
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

// Checks the maps that the options name; what is to be shown of them behind the findings.
Result<std::string> check_maps(const Options& options, Checker& checker) {
  std::vector<std::string> arguments = options.names;
  if (!arguments.empty())
    arguments.erase(arguments.begin());
  if (!options.trace.empty())
    arguments.push_back(options.trace);
  std::string shown;
  for (const std::string& argument : arguments) {
    const auto maps = find_maps(argument);
    if (!maps)
      return maps.failure();
    for (const std::string& path : *maps) {
      auto text = read(path, largest_map);
      if (!text)
        return text.failure();
      const Map map{path, LineArray::split(*std::move(text))};
      const auto run = checker.add(map);
      if (options.diff && run && run->result)
        shown += unified_diff(*run);
      if (argument == options.trace)
        shown += run ? trace(*run) : argument + ": it is not converted\n";
    }
  }
  return shown;
}

// Checks what the options name. The exit status, or what could not be read or written.
Result<int> check(const Options& options) {
  const std::string folder = options.names.empty() ? "" : options.names[0];
  const auto texts = read_templates(folder.empty() ? "." : folder, options.edition);
  if (!texts)
    return texts.failure();
  Checker checker(find_editions(folder, *texts));
  const auto shown = check_maps(options, checker);
  if (!shown)
    return shown.failure();
  const char *no_colour = std::getenv("NO_COLOR"), *terminal = std::getenv("TERM");
  const bool escape = output_has_colours(), dumb = terminal && std::string_view(terminal) == "dumb";
  const bool colours = escape && !dumb && (!no_colour || !*no_colour);
  if (!print(checker.report(colours) + (escape ? printable_lines(*shown) : *shown)))
    return Failure{"standard output", "write the findings", "it is closed or full"};
  const bool fault = checker.count(Severity::error) > 0 ||
                     (options.strict && checker.count(Severity::warning) > 0);
  return fault ? 1 : 0;
}

int run(const std::vector<std::string>& arguments) {
  Options options;
  if (const std::string fault = parse(arguments, options); !fault.empty()) {
    print_error("vora-template-check: " + fault + "\r\n" + usage);
    return 2;
  }
  if (options.help)
    return print(usage + help) ? 0 : 2;
  if (options.version)
    return print("vora-template-check " VERSION "\n") ? 0 : 2;
  if (const Rule* rule = find_rule(options.explain))
    return print(explain(*rule)) && print("\n") ? 0 : 2;
  const auto status = check(options);
  if (!status)
    print_error(status.failure().text());
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
