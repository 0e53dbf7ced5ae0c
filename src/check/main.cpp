// vora-template-check: checks structure templates for those who write them.
#include "check/checker.h"
#include "check/options.h"
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

namespace fs = std::filesystem;

namespace {

// Larger files are refused.
constexpr std::uintmax_t largest_template = 16 << 20;  // bytes
constexpr std::uintmax_t largest_map = LineArray::max_text_size;

fs::path path_of(const std::string& name) { return {std::u8string(name.begin(), name.end())}; }

std::string text_of(const fs::path& path) {
  const std::u8string name = path.u8string();
  return {name.begin(), name.end()};
}

Result<std::string> read(const std::string& name, std::uintmax_t largest) {
  const fs::path path = path_of(name);
  const Failure failure{name, "read it", "it is missing, no file or not accessible"};
  std::error_code error;
  if (!fs::is_regular_file(path, error))
    return failure;
  const std::uintmax_t size = fs::file_size(path, error);
  if (!error && size > largest)
    return Failure{name, "read it", "it is too large"};
  std::ifstream file(path, std::ios::binary);
  std::string text(error ? 0 : size, 0);
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  return file && !error ? Result<std::string>(std::move(text)) : failure;
}

// The texts of the templates in a folder.
Result<Texts> read_templates(const std::string& folder, std::optional<char> edition) {
  Texts texts;
  std::error_code error;
  fs::directory_iterator entries(path_of(folder), error);
  for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
    const std::string name = text_of(entries->path().filename());
    if (!is_template_name(name) || (edition && ascii_lower(name[0]) != *edition))
      continue;
    auto text = read(text_of(entries->path()), largest_template);
    if (!text)
      return text.failure();
    texts[name] = *std::move(text);
  }
  if (error)
    return Failure{folder, "read the folder", error.message()};
  if (texts.empty())
    return Failure{folder, "check it", "there are no templates in it"};
  return texts;
}

// Adds the files that `iterator` visits and that have a name which `fits`, in order.
template <class Iterator, class Fits>
Result<Done> add_files(const std::string& argument, const fs::path& folder, const Fits& fits,
                       std::vector<std::string>& names) {
  std::vector<std::string> found;
  std::error_code error;
  for (Iterator at(folder, error); !error && at != Iterator(); at.increment(error))
    if (std::error_code ignored;
        fits(text_of(at->path().filename())) && at->is_regular_file(ignored))
      found.push_back(text_of(at->path()));
  if (error)
    return Failure{argument, "read the folder", error.message()};
  if (found.empty())
    return Failure{argument, "check it", "there are no maps in it"};
  std::ranges::sort(found);
  names.insert(names.end(), found.begin(), found.end());
  return Done();
}

// Adds the maps that an argument stands for: a map, those in a folder and its folders, or those
// that match a name with one "*", which the command prompt of Windows leaves to the program.
Result<Done> add_maps(const std::string& argument, std::vector<std::string>& names) {
  const fs::path path = path_of(argument);
  std::error_code error;
  if (fs::is_directory(path, error))
    return add_files<fs::recursive_directory_iterator>(
        argument, path, [](const std::string& name) { return matches_pattern(name, "*.galaxy"); },
        names);
  const std::string name = text_of(path.filename());
  const auto star = name.find('*');
  if (star == name.npos || fs::exists(path, error)) {
    names.push_back(argument);
    return Done();
  }
  const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
  return add_files<fs::directory_iterator>(
      argument, folder,
      [&](const std::string& file) {
        return file.size() >= name.size() - 1 && file.starts_with(name.substr(0, star)) &&
               matches_pattern(file, name.substr(star));
      },
      names);
}

// A unified diff for a terminal: no line of a map may disturb it.
std::string for_terminal(std::string_view diff) {
  std::string shown;
  while (!diff.empty()) {
    const auto end = std::min(diff.find_first_of("\t\n"), diff.size());
    const bool cr = end > 0 && diff[end - 1] == '\r' && diff.substr(end).starts_with('\n');
    shown += printable(diff.substr(0, end - (cr ? 1 : 0)));
    shown += diff.substr(end, 1);
    diff.remove_prefix(std::min(end + 1, diff.size()));
  }
  return shown;
}

// Checks the maps of these names; what is to be shown of them behind the findings.
Result<std::string> check_maps(const Options& options, const std::vector<std::string>& names,
                               Checker& checker) {
  std::string shown;
  for (const std::string& name : names) {
    auto text = read(name, largest_map);
    if (!text)
      return text.failure();
    const Map map{name, LineArray::split(*std::move(text))};
    const auto run = checker.add(map);
    if (options.diff && run && run->result)
      shown += unified_diff(*run);
    if (!options.trace.empty())
      shown += run ? trace(*run) : name + ": it is not converted\n";
  }
  return shown;
}

bool has_colours() {
  const char *no_colour = std::getenv("NO_COLOR"), *terminal = std::getenv("TERM");
  return output_has_colours() && !(no_colour && *no_colour) &&
         !(terminal && std::string_view(terminal) == "dumb");
}

// Checks what the options name. The exit status, or what could not be read or written.
Result<int> check(const Options& options) {
  const std::string folder = options.names.empty() ? "" : options.names[0];
  const auto texts = read_templates(folder.empty() ? "." : folder, options.edition);
  if (!texts)
    return texts.failure();
  std::vector<std::string> maps;
  if (!options.trace.empty())
    maps.push_back(options.trace);
  for (std::size_t i = 1; i < options.names.size(); ++i)
    if (const auto added = add_maps(options.names[i], maps); !added)
      return added.failure();
  Checker checker(find_editions(folder, *texts));
  const auto shown = check_maps(options, maps, checker);
  if (!shown)
    return shown.failure();
  const std::string report = checker.report(has_colours());
  if (!print(report + (output_has_colours() ? for_terminal(*shown) : *shown)))
    return Failure{"vora-template-check", "write the findings",
                   "standard output is closed or full"};
  const bool strict_fault = options.strict && checker.count(Severity::warning) > 0;
  return checker.count(Severity::error) > 0 || strict_fault ? 1 : 0;
}

int run(const std::vector<std::string>& arguments) {
  const auto parsed = parse_options(arguments);
  if (const auto* wrong = std::get_if<std::string>(&parsed)) {
    print_error("vora-template-check: " + printable(*wrong) + "\n" + usage);
    return 2;
  }
  const Options& options = std::get<Options>(parsed);
  if (options.help)
    return print(std::string(usage) + help) ? 0 : 2;
  if (options.version)
    return print("vora-template-check " VERSION "\n") ? 0 : 2;
  if (!options.explain.empty())
    return print(std::string(explain(*find_rule(options.explain))) + "\n") ? 0 : 2;
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
