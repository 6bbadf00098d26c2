/// Formatting JSON values.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace standin {

/// A JSON string with its quotes. Each byte outside printable ASCII becomes \u00XX, where XX is the
/// byte. A reader gets the bytes back by encoding the parsed string as Latin-1.
std::string json_string(std::string_view bytes);

/// A JSON array of strings, each formatted by json_string().
std::string json_array(const std::vector<std::string> &strings);

/// A JSON array of numbers.
std::string json_array(const std::vector<int> &numbers);

} // namespace standin
