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
#include <string_view>

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

int fail(std::string_view message) {
  std::cerr << "make_executable: " << message << '\n';
  return EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3)
    return fail(
        "usage: make_executable FILE VERSION, for example make_executable game.exe 1.2.3.4");
  const auto version = read_version(argv[2]);
  if (!version)
    return fail(std::string(argv[2]) +
                " is not a version: four numbers up to 65535, joined by \".\"");
  std::ofstream file(argv[1], std::ios::binary | std::ios::trunc);
  file << Executable{.product_version = *version}.bytes();
  file.close();
  return file ? EXIT_SUCCESS : fail(std::string("cannot write ") + argv[1]);
}
