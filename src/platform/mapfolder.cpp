// What the machines share of the steps of a replacement.
#include "platform/mapfolder.h"

#include <random>

namespace {

constexpr char prefix[] = ".vora-map-updater-";
constexpr char suffix[] = ".tmp";

}  // namespace

std::string MapFolder::temporaryname() {
  static std::random_device random;
  return prefix + std::to_string(random()) + suffix;
}

bool MapFolder::istemporary(const std::string& name) {
  return name.starts_with(prefix) && name.ends_with(suffix);
}
