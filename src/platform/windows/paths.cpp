// Makes paths absolute, in the form that Windows accepts without a limit on their length.
#include "platform/windows/paths.h"

#include "platform/path_rules.h"
#include "platform/windows/wide_text.h"

#include <algorithm>

#include <windows.h>

namespace {

constexpr std::string_view verbatim = R"(\\?\)";
constexpr std::string_view verbatim_share = R"(\\?\UNC\)";
constexpr std::string_view share = R"(\\)";

std::string current_folder() {
  return narrow(
      system_text([](wchar_t* folder, DWORD size) { return GetCurrentDirectoryW(size, folder); }));
}

// Takes the names of a share's server and folder off `rest`. Returns the share's root.
std::string take_share(std::string_view& rest) {
  std::string root(share);
  for (int name = 0; name < 2; ++name) {
    const auto length = std::min(rest.find_first_of("\\/"), rest.size());
    root.append(rest.substr(0, length)).append("\\");
    rest.remove_prefix(std::min(length + 1, rest.size()));
  }
  return root;
}

// Takes the root off the front of a path. Returns the empty text if there is none.
std::string take_root(std::string_view& rest) {
  const bool is_share = rest.starts_with(verbatim_share);
  if (is_share || (rest.starts_with(share) && !rest.starts_with(verbatim))) {
    rest.remove_prefix(is_share ? verbatim_share.size() : share.size());
    return take_share(rest);
  }
  const bool is_verbatim = rest.starts_with(verbatim);
  if (is_verbatim)
    rest.remove_prefix(verbatim.size());
  if (!has_drive(rest))
    return std::string(is_verbatim ? verbatim : "");
  const std::string root{ascii_upper(rest[0]), ':', '\\'};
  rest.remove_prefix(2);
  return root;
}

}  // namespace

std::wstring AbsolutePath::wide() const {
  const std::string path = text();
  if (root.starts_with(verbatim))
    return widen(path);
  if (root.starts_with(share))
    return widen(verbatim_share) + widen(path.substr(share.size()));
  return widen(verbatim) + widen(path);
}

std::string AbsolutePath::text() const {
  std::string path = root;
  for (const std::string& name : names)
    path.append(path.ends_with('\\') ? "" : "\\").append(name);
  return path;
}

Result<AbsolutePath> locate(const std::string& path) {
  if (path.empty())
    return Failure{path, "find it", "it has no name", Failure::Kind::missing};
  std::string_view rest = path;
  AbsolutePath location{take_root(rest), {}};
  if (location.root.empty()) {
    const std::string folder = current_folder();
    std::string_view below = folder;
    location.root = take_root(below);
    if (!is_separator(rest[0]))
      location.names = split_names(below);
  }
  auto names = resolve(std::move(location.names), rest, path);
  if (!names)
    return names.failure();
  location.names = *std::move(names);
  return location;
}
