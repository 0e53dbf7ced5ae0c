// The rules of temporary files and of comparing contents that all machines share.
#include "platform/open_map.h"

#include <random>

namespace {

constexpr std::string_view temporary_start = ".vora-map-updater-";
constexpr std::string_view temporary_end = ".tmp";

}  // namespace

std::string OpenMap::temporary_name() {
  static std::random_device random;
  return std::string(temporary_start) + std::to_string(random()) + std::string(temporary_end);
}

bool OpenMap::is_temporary(std::string_view name) {
  if (!name.starts_with(temporary_start) || !name.ends_with(temporary_end))
    return false;
  name.remove_prefix(temporary_start.size());
  name.remove_suffix(temporary_end.size());
  return !name.empty() && name.find_first_not_of("0123456789") == name.npos;
}

Result<bool> OpenMap::holds(const std::string& entry, std::string_view content) {
  const auto opened = open_to_read(entry);
  if (!opened)
    return opened.failure();
  const std::optional<Content>& file = *opened;
  if (!file || file->size != content.size())
    return false;
  char buffer[1 << 13];
  while (!content.empty()) {
    const std::string_view piece = content.substr(0, sizeof buffer);
    const auto length = file->read(buffer, piece.size());
    if (!length)
      return last_error();
    if (std::string_view(buffer, *length) != piece)
      return false;
    content.remove_prefix(piece.size());
  }
  return true;
}

Result<std::string> OpenMap::write_temporary(std::string_view content) {
  for (int attempt = 0; attempt < 100; ++attempt) {
    std::string free = temporary_name();
    const auto made = make_temporary(free, content);
    if (!made)
      return made.failure();
    if (*made)
      return free;
  }
  return failure("no name is free");
}
