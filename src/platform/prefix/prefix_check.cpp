// Tells whether a folder is a Wine prefix, and what is wrong with one that is not.
#include "platform/prefix/prefix_check.h"

namespace fs = std::filesystem;

namespace {

bool is_there(const fs::path& path) {
  std::error_code ignored;
  return fs::exists(path, ignored);
}

std::string suggest(const fs::path& folder) {
  const auto around = prefix_around(folder);
  if (is_prefix(folder / "pfx"))
    return "; did you mean " + (folder / "pfx").string() + "?";
  if (around && *around != folder)
    return "; did you mean " + *around + "?";
  return "";
}

// Why nothing was read of the registry; empty if something was.
std::string registry_problem(const fs::path& folder, const std::optional<Failure>& unread) {
  if (unread)
    return "its system.reg cannot be read: " + unread->reason;
  if (is_there(folder / "system.reg"))
    return "";
  std::error_code ignored;
  return fs::is_directory(folder, ignored) ? "it has no system.reg" : "there is no such folder";
}

}  // namespace

bool is_prefix(const fs::path& folder) {
  return is_there(folder / "system.reg") &&
         (is_there(folder / "dosdevices") || is_there(folder / "drive_c"));
}

std::optional<std::string> prefix_around(fs::path folder) {
  for (; !folder.empty(); folder = folder.parent_path()) {
    if (is_prefix(folder))
      return folder.string();
    if (folder == folder.root_path())
      break;
  }
  return std::nullopt;
}

std::string explain_unregistered(const fs::path& folder, const std::optional<Failure>& unread,
                                 const std::string& subject) {
  const std::string problem = registry_problem(folder, unread);
  if (problem.empty())
    return subject + " is not registered in the Wine prefix " + folder.string() + suggest(folder);
  return "the Wine prefix " + folder.string() + " cannot be used: " + problem + suggest(folder);
}
