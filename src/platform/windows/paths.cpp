// Paths as the program writes them, made absolute and long enough for every tree.
#include "platform/windows/paths.h"

#include "platform/names.h"
#include "platform/windows/wide.h"

#include <algorithm>

#include <windows.h>

namespace {

constexpr std::string_view verbatim = R"(\\?\)";
constexpr std::string_view verbatimshare = R"(\\?\UNC\)";
constexpr std::string_view share = R"(\\)";

bool isseparator(char c) { return c == '\\' || c == '/'; }

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

std::string currentfolder() {
  return narrow(
      systemtext([](wchar_t* folder, DWORD size) { return GetCurrentDirectoryW(size, folder); }));
}

// `rest` with the names of a share's server and folder taken off.
std::string takeshare(std::string_view& rest) {
  std::string root(share);
  for (int name = 0; name < 2; ++name) {
    const auto length = std::min(rest.find_first_of("\\/"), rest.size());
    root.append(rest.substr(0, length)).append("\\");
    rest.remove_prefix(std::min(length + 1, rest.size()));
  }
  return root;
}

// Takes the root off a path that names one; empty for any other path.
std::string takeroot(std::string_view& rest) {
  const bool isshare = rest.starts_with(verbatimshare);
  if (isshare || (rest.starts_with(share) && !rest.starts_with(verbatim))) {
    rest.remove_prefix(isshare ? verbatimshare.size() : share.size());
    return takeshare(rest);
  }
  const bool verbatimpath = rest.starts_with(verbatim);
  if (verbatimpath)
    rest.remove_prefix(verbatim.size());
  if (!hasdrive(rest))
    return std::string(verbatimpath ? verbatim : "");
  const std::string root{upper(rest[0]), ':', '\\'};
  rest.remove_prefix(2);
  return root;
}

}  // namespace

std::wstring Location::wide() const {
  const std::string path = text();
  if (root.starts_with(verbatim))
    return widen(path);
  if (root.starts_with(share))
    return widen(verbatimshare) + widen(path.substr(share.size()));
  return widen(verbatim) + widen(path);
}

std::string Location::text() const {
  std::string path = root;
  for (const std::string& name : names)
    path.append(path.ends_with('\\') ? "" : "\\").append(name);
  return path;
}

Result<Location> locate(const std::string& path) {
  if (path.empty())
    return Failure{path, "find it", "it has no name", true};
  std::string_view rest = path;
  Location location{takeroot(rest), {}};
  if (location.root.empty()) {
    const std::string folder = currentfolder();
    std::string_view below = folder;
    location.root = takeroot(below);
    if (!isseparator(rest[0]))
      location.names = splitpath(below);
  }
  auto names = resolve(std::move(location.names), rest, path);
  if (!names)
    return names.failure();
  location.names = *std::move(names);
  return location;
}
