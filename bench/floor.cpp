// The least that a conversion can cost: each map below a folder is read and replaced by itself,
// with the care that the program takes, and nothing is looked at in between.
#include "platform/prefix/prefix_files.h"
#include "platform/prefix/process.h"

#include <cstdio>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

Result<Done> replace_by_itself(Files& files, const std::string& map) {
  const auto opened = files.open_map(map);
  if (!opened)
    return opened.failure();
  OpenMap& open = **opened;
  const std::string backup = open.name.substr(0, open.name.size() - 3) + "old";
  return replace_map(open, {open.text, {}, open.text, backup});
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: floor FOLDER\n", stderr);
    return 2;
  }
  set_up_process();
  const Machine machine = find_machine([](const Machine&) { return true; });
  PrefixFiles files(machine);
  const Paths paths(machine);
  std::vector<std::string> maps;
  for (const auto& entry : fs::recursive_directory_iterator(fs::canonical(argv[1])))
    if (entry.path().extension() == ".galaxy")
      maps.push_back(paths.windows_path(entry.path().string()));
  for (const std::string& map : maps) {
    if (const auto done = replace_by_itself(files, map); !done) {
      std::fputs((done.failure().text() + "\n").c_str(), stderr);
      return 1;
    }
  }
  return 0;
}
