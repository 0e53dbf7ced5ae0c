// Makes a small executable file that carries a product version: what a sample machine holds in the
// place of the game.
#include "executable.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>

namespace {

// Four numbers of 16 bits, joined by ".".
std::optional<VersionParts> read_version(const std::string& text) {
  VersionParts parts{};
  std::istringstream stream(text + ".");
  for (std::uint16_t& part : parts)
    if (char dot = 0; !(stream >> part >> dot) || dot != '.')
      return std::nullopt;
  return stream.peek() == EOF ? std::optional(parts) : std::nullopt;
}

}  // namespace

int main(int argc, char** argv) {
  const auto version = argc == 3 ? read_version(argv[2]) : std::nullopt;
  if (!version) {
    std::cerr << "usage: make_executable FILE VERSION, for example game.exe 1.2.3.4\n";
    return EXIT_FAILURE;
  }
  std::ofstream file(argv[1], std::ios::binary);
  file << Executable{*version}.bytes();
  file.close();
  if (!file)
    std::cerr << "make_executable: cannot write " << argv[1] << '\n';
  return file ? EXIT_SUCCESS : EXIT_FAILURE;
}
