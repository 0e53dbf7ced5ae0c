// Makes a small executable file that carries a product version: what a sample machine holds in the
// place of the game.
#include "executable.h"

#include <charconv>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

namespace {

// Four numbers of 16 bits, joined by ".".
std::optional<VersionParts> read_version(std::string_view text) {
  VersionParts parts{};
  const char* at = text.data();
  const char* const end = at + text.size();
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i > 0 && (at == end || *at != '.'))
      return std::nullopt;
    at += i > 0;
    const auto [stop, error] = std::from_chars(at, end, parts[i]);
    if (error != std::errc{})
      return std::nullopt;
    at = stop;
  }
  return at == end ? std::optional(parts) : std::nullopt;
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
