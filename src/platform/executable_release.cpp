// The release of an executable: what the release check reads of the game.
#include "platform/executable_release.h"

std::string getexeversion(System& system, const std::string& path) {
  const auto version = system.product_version(path);
  if (!version)
    return "";
  const auto parts = [](std::uint32_t half) {
    return std::to_string(half >> 16) + "." + std::to_string(half & 0xFFFF);
  };
  return parts(version->high) + "." + parts(version->low);
}
