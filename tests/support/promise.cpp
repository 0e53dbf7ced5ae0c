// Folders of maps to lose, and the promise that no map is ever lost.
#include "tests/support/promise.h"

#include "platform/prefix/letter_case.h"
#include "platform/replacing.h"

#include <algorithm>

namespace fs = std::filesystem;

namespace {

std::string numbered(std::string text, int i) {
  const auto at = text.find("Foo");
  return text.insert(at + 3, std::to_string(i));
}

std::string content_of(const Tree& left, const std::string& name) {
  const auto found = left.find(name);
  return found == left.end() ? "none" : found->second;
}

}  // namespace

std::string Galaxies::old(int i) const { return numbered(old_map, i); }

std::string Galaxies::converted(int i) const {
  return numbered(edition == "v" ? converted_map : fixed_map, i);
}

std::string Galaxies::backup(int i) const { return i % 3 == 1 ? numbered(old_map, 1000 + i) : ""; }

void Galaxies::fill(const fs::path& folder) const {
  fs::remove_all(folder);
  fs::create_directories(folder);
  for (int i = 0; i < count; ++i) {
    write_file(folder / (name(i) + ".galaxy"), old(i));
    if (!backup(i).empty())
      write_file(folder / (name(i) + (edition == "v" ? ".galold" : ".GALold")), backup(i));
    if (has_equal_backup(i))
      write_file(folder / (name(i) + ".galold"), old(i));
  }
}

bool has_backup(const Tree& left, const std::string& name, const std::string& content) {
  return std::any_of(left.begin(), left.end(), [&](const auto& file) {
    return lowercase(file.first).starts_with(name + ".galold") && file.second == content;
  });
}

std::string broken(const Galaxies& galaxies, const Tree& left) {
  for (int i = 0; i < galaxies.count; ++i) {
    const std::string name = galaxies.name(i);
    const std::string own = content_of(left, name + ".galaxy");
    if (own != galaxies.old(i) && own != galaxies.converted(i))
      return name + " is half converted: " + own;
    if (own != galaxies.old(i) && !has_backup(left, name, galaxies.old(i)))
      return name + " is lost";
    if (!galaxies.backup(i).empty() && !has_backup(left, name, galaxies.backup(i)))
      return name + "'s older backup is lost";
  }
  return "";
}

std::string unfinished(const Galaxies& galaxies, const Tree& left) {
  for (int i = 0; i < galaxies.count; ++i)
    if (content_of(left, galaxies.name(i) + ".galaxy") != galaxies.converted(i))
      return galaxies.name(i) + " is not converted";
  for (const auto& [name, content] : left)
    if (OpenMap::is_temporary(name))
      return name + " stayed behind";
  return broken(galaxies, left);
}
