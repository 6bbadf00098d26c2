/// Writing JSON values as text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace standin {

/// A JSON string in its quotes. Every byte outside printable ASCII becomes \u00XX of that byte, so
/// any bytes come back whole from a reader that encodes the string as Latin-1.
std::string json_string(std::string_view bytes);

/// A JSON array of strings, each as by json_string().
std::string json_array(const std::vector<std::string> &strings);

/// A JSON array of numbers.
std::string json_array(const std::vector<int> &numbers);

} // namespace standin
