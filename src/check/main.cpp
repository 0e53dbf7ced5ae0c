// vora-template-check: checks structure templates for those who write them.
#include "check/checker.h"
#include "platform/console.h"
#include "platform/path_rules.h"
#include "platform/printable.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <optional>

namespace fs = std::filesystem;

namespace {

constexpr const char* usage = "usage: vora-template-check [--edition v|t] [FOLDER [MAP...]]\n"
                              "       vora-template-check --diff [--edition v|t] FOLDER MAP...\n";

constexpr const char* help =
    "\n"
    "Checks the structure templates in FOLDER, the current folder by default. Each MAP\n"
    "is converted in memory, and what happens to it is checked, too. Nothing is written.\n"
    "\n"
    "  --diff           show what the conversion changes, as a unified diff\n"
    "  --edition v|t    check the templates of the base game or of Tarnfall only\n"
    "  --help           show this text\n"
    "  --version        show the version\n"
    "\n"
    "Findings are FILE:LINE: error|warning: TEXT [RULE]. The exit status is 0 if there are\n"
    "no errors, 1 if there are, and 2 for a wrong argument or a file that cannot be read.\n";

// Larger files are refused.
constexpr std::uintmax_t largest_template = 16 << 20;  // bytes
constexpr std::uintmax_t largest_map = LineArray::max_text_size;

struct Options {
  bool diff = false;
  std::optional<char> edition;
  std::vector<std::string> names;  // the folder, then the maps
};

// Nothing if the arguments are wrong.
std::optional<Options> parse(const std::vector<std::string>& arguments) {
  Options options;
  for (auto at = arguments.begin(); at != arguments.end(); ++at) {
    if (*at == "--diff")
      options.diff = true;
    else if (*at == "--edition" && std::next(at) != arguments.end() &&
             (at[1] == "v" || at[1] == "t"))
      options.edition = (++at)->front();
    else if (at->starts_with("-") || at->empty())
      return std::nullopt;
    else
      options.names.push_back(*at);
  }
  if (options.diff && options.names.size() < 2)
    return std::nullopt;
  return options;
}

fs::path path_of(const std::string& name) { return {std::u8string(name.begin(), name.end())}; }

std::string text_of(const fs::path& path) {
  const std::u8string name = path.u8string();
  return {name.begin(), name.end()};
}

Result<std::string> read(const fs::path& path, std::uintmax_t largest) {
  const Failure failure{text_of(path), "read it", "it is missing, no file or not accessible"};
  std::error_code error;
  if (!fs::is_regular_file(path, error))
    return failure;
  const std::uintmax_t size = fs::file_size(path, error);
  if (!error && size > largest)
    return Failure{text_of(path), "read it", "it is too large"};
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
    auto text = read(entries->path(), largest_template);
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

// Checks what the options name; `diffs` gets the differences. The findings, or what could not be
// read.
Result<Findings> check(const Options& options, std::string& diffs) {
  const std::string folder = options.names.empty() ? "." : options.names[0];
  const auto texts = read_templates(folder, options.edition);
  if (!texts)
    return texts.failure();
  Checker checker(find_editions(options.names.empty() ? "" : folder, *texts));
  for (std::size_t i = 1; i < options.names.size(); ++i) {
    auto text = read(path_of(options.names[i]), largest_map);
    if (!text)
      return text.failure();
    diffs += checker.add({options.names[i], LineArray::split(*std::move(text))}, options.diff);
  }
  return checker.finish();
}

int run(const std::vector<std::string>& arguments) {
  const auto has = [&](const char* option) {
    return std::find(arguments.begin(), arguments.end(), option) != arguments.end();
  };
  if (has("--help") || has("--version")) {
    const std::string text =
        has("--help") ? std::string(usage) + help : "vora-template-check " VERSION "\n";
    return print(text) ? 0 : 2;
  }
  const auto options = parse(arguments);
  if (!options) {
    print_error(usage);
    return 2;
  }
  std::string diffs;
  auto findings = check(*options, diffs);
  if (!findings) {
    print_error(printable(findings.failure().text()) + "\n");
    return 2;
  }
  if (!print(findings->report(output_has_colours()) + diffs)) {
    print_error("vora-template-check: the findings cannot be written\n");
    return 2;
  }
  return findings->errors() > 0 ? 1 : 0;
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
