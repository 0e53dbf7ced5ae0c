// The command line of vora-template-check.
#include "check/options.h"

#include "check/rules.h"

#include <algorithm>
#include <map>

const char* const usage =
    "usage: vora-template-check [--strict] [--edition v|t] [FOLDER [MAP...]]\n"
    "       vora-template-check --diff [--edition v|t] FOLDER MAP...\n"
    "       vora-template-check --trace MAP [--edition v|t] [FOLDER]\n"
    "       vora-template-check --explain RULE\n";

const char* const help =
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
    "baseline begins with the same line; others are counted, but not checked.\n"
    "The exit status is 0 if there are no errors, 1 if there are, and 2 for a wrong\n"
    "argument or a file that cannot be read.\n";

// Takes the value of an option; what is wrong with it, if anything.
static std::string set_value(Options& options, const std::string& name, const std::string& value) {
  if (value.empty())
    return name + " needs a value";
  if (name == "--edition" && value != "v" && value != "t")
    return "there is no edition \"" + value + "\"";
  if (name == "--explain" && !find_rule(value))
    return "there is no rule \"" + value + "\"";
  if (name == "--edition")
    options.edition = value.front();
  else
    (name == "--trace" ? options.trace : options.explain) = value;
  return "";
}

std::variant<Options, std::string> parse_options(const std::vector<std::string>& arguments) {
  Options options;
  const std::map<std::string, bool Options::*> flags = {{"-h", &Options::help},
                                                        {"--help", &Options::help},
                                                        {"--version", &Options::version},
                                                        {"--diff", &Options::diff},
                                                        {"--strict", &Options::strict}};
  bool only_names = false;
  for (auto at = arguments.begin(); at != arguments.end() && !options.help; ++at) {
    const auto equals = std::min(at->find('='), at->size());
    const std::string name = at->substr(0, equals);
    std::string wrong;
    if (at->empty())
      wrong = "an argument is empty";
    else if (only_names || at->front() != '-')
      options.names.push_back(*at);
    else if (*at == "--")
      only_names = true;
    else if (flags.contains(*at))
      options.*flags.at(*at) = true;
    else if (name != "--edition" && name != "--trace" && name != "--explain")
      wrong = "there is no option \"" + *at + "\"";
    else if (equals < at->size())
      wrong = set_value(options, name, at->substr(equals + 1));
    else
      wrong = set_value(options, name, std::next(at) == arguments.end() ? "" : *++at);
    if (!wrong.empty())
      return wrong;
  }
  if (options.diff && options.names.size() < 2 && !options.help)
    return "--diff needs a folder and a map";
  return options;
}
