/// Parsing numbers.
#pragma once

#include <optional>
#include <string_view>

namespace standin {

/// A whole number in decimal digits, with a leading "-" if negative. Empty if `text` holds anything
/// else, white space and "+" included, or if the number is below `minimum` or above `maximum`.
std::optional<long> parse_number(std::string_view text, long minimum, long maximum);

} // namespace standin
