// The names of temporary files, and how contents are compared.
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

std::optional<bool> OpenMap::begins_with(const Read& read, std::string_view content) {
  char buffer[1 << 13];
  while (!content.empty()) {
    const std::string_view piece = content.substr(0, sizeof buffer);
    const auto length = read(buffer, piece.size());
    if (!length)
      return std::nullopt;
    if (std::string_view(buffer, *length) != piece)
      return false;
    content.remove_prefix(piece.size());
  }
  return true;
}
