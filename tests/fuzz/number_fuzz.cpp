// The numeric value of any text: a number, whose text has the same value again.
#include "engine/numbers.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const double value = numeric_value({reinterpret_cast<const char*>(data), size});
  if (std::isnan(value))
    std::abort();
  if (std::isfinite(value) && std::abs(value) < 1e15 && numeric_value(number_text(value)) != value)
    std::abort();
  static_cast<void>(whole_part(value));
  return 0;
}
