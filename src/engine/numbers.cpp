// Numbers in texts: versions, section counts and the counters that labels show.
#include "engine/numbers.h"

#include <charconv>
#include <limits>

namespace {

bool is_blank(char c) { return c == ' ' || c == '\t'; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }

// The characters of the number at the start of `text`, blanks left out.
std::string leading_number(std::string_view text) {
  std::string number;
  bool point = false;
  for (const char c : text) {
    if (is_blank(c))
      continue;
    const bool sign = number.empty() && (c == '-' || c == '+');
    const bool first_point = c == '.' && !point;
    if (!sign && !first_point && !is_digit(c))
      break;
    point = point || c == '.';
    number += c;
  }
  return number;
}

}  // namespace

double numeric_value(std::string_view text) {
  const std::string number = leading_number(text);
  const std::size_t plus = number.starts_with('+') ? 1 : 0;
  double value = 0;
  const auto result = std::from_chars(number.data() + plus, number.data() + number.size(), value,
                                      std::chars_format::fixed);
  if (result.ec != std::errc::result_out_of_range)
    return value;
  const std::string whole = number.substr(0, number.find('.'));
  if (whole.find_first_of("123456789") == std::string::npos)
    return 0;  // too small, not too large
  return number.starts_with('-') ? std::numeric_limits<double>::lowest()
                                 : std::numeric_limits<double>::max();
}

bool has_number(std::string_view text) {
  return leading_number(text).find_first_of("0123456789") != std::string::npos;
}

long long whole_part(double value) {
  constexpr auto limit = static_cast<double>(std::numeric_limits<long long>::max());
  if (value >= limit)
    return std::numeric_limits<long long>::max();
  if (value <= -limit)
    return std::numeric_limits<long long>::min();
  return static_cast<long long>(value);
}

std::string number_text(double value) {
  char buffer[400];  // the longest double has 309 digits before its point
  const auto result =
      std::to_chars(std::begin(buffer), std::end(buffer), value, std::chars_format::fixed);
  return {std::begin(buffer), result.ptr};
}
