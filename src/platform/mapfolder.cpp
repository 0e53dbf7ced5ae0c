// What the machines share of the steps of a replacement.
#include "platform/mapfolder.h"

#include <random>

namespace {

constexpr std::string_view prefix = ".vora-map-updater-";
constexpr std::string_view suffix = ".tmp";

}  // namespace

const MapFolder::Reason MapFolder::not_ordinary{"it is not an ordinary file any more"};

std::string MapFolder::temporary_name() {
  static std::random_device random;
  return std::string(prefix) + std::to_string(random()) + std::string(suffix);
}

bool MapFolder::is_temporary(std::string_view name) {
  if (!name.starts_with(prefix) || !name.ends_with(suffix))
    return false;
  const auto number = name.substr(prefix.size(), name.size() - prefix.size() - suffix.size());
  return !number.empty() && number.find_first_not_of("0123456789") == number.npos;
}

std::optional<bool> MapFolder::reads(const Read& read, std::string_view text) {
  char buffer[1 << 16];
  while (!text.empty()) {
    const std::string_view piece = text.substr(0, sizeof buffer);
    const auto length = read(buffer, piece.size());
    if (!length)
      return std::nullopt;
    if (std::string_view(buffer, *length) != piece)
      return false;
    text.remove_prefix(piece.size());
  }
  return true;
}
