// Reads the product version of an arbitrary file.
#include "platform/prefix/version_resource.h"

#include <cstdint>
#include <sstream>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream file(std::string(reinterpret_cast<const char*>(data), size));
  static_cast<void>(read_product_version(file));
  return 0;
}
