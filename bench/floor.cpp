// The least that a safe replacement can cost: each map below a folder is read, written to a
// temporary file, flushed, linked to its backup, flushed with it and renamed over, one after the
// other, with nothing checked and nothing converted.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// Ends the program when a system call fails.
template <class Result> Result check(Result result, const std::string& map) {
  if (result >= 0)
    return result;
  std::perror(map.c_str());
  std::exit(1);
}

std::string read_map(const std::string& map) {
  const int file = check(::open(map.c_str(), O_RDONLY | O_CLOEXEC), map);
  struct stat status;
  check(::fstat(file, &status), map);
  std::string text(static_cast<std::size_t>(status.st_size), '\0');
  check(::read(file, text.data(), text.size()), map);
  check(::close(file), map);
  return text;
}

void flush_and_close(int file, const std::string& map) {
  check(::fsync(file), map);
  check(::close(file), map);
}

void replace(const std::string& map) {
  const std::string text = read_map(map), temporary = map + ".tmp";
  const std::string backup = map.substr(0, map.size() - 3) + "old";
  const int file =
      check(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600), map);
  check(::write(file, text.data(), text.size()), map);
  flush_and_close(file, map);
  check(::link(map.c_str(), backup.c_str()), map);
  flush_and_close(check(::open(map.c_str(), O_RDONLY | O_CLOEXEC), map), map);
  check(::rename(temporary.c_str(), map.c_str()), map);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: floor FOLDER\n", stderr);
    return 2;
  }
  std::vector<std::string> maps;
  for (const auto& entry : fs::recursive_directory_iterator(argv[1]))
    if (entry.path().extension() == ".galaxy")
      maps.push_back(entry.path());
  for (const std::string& map : maps)
    replace(map);
  return 0;
}
