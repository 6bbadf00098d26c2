#include "number.h"

#include <charconv>
#include <system_error>

namespace standin {

std::optional<long> parse_number(std::string_view text, long minimum, long maximum) {
  long value = 0;
  const char *begin = text.data();
  const char *end = begin + text.size();
  const auto [stop, error] = std::from_chars(begin, end, value);
  if (error != std::errc{} || stop != end || value < minimum || value > maximum) {
    return std::nullopt;
  }
  return value;
}

} // namespace standin
