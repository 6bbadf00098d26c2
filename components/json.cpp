#include "json.h"

#include <array>
#include <cstdio>

namespace standin {

std::string json_string(std::string_view bytes) {
  std::string text = "\"";
  for (const char byte : bytes) {
    const auto code = static_cast<unsigned char>(byte);
    if (byte == '"' || byte == '\\') {
      text += '\\';
      text += byte;
    } else if (code < 0x20 || code > 0x7e) {
      std::array<char, 8> escape{};
      std::snprintf(escape.data(), escape.size(), "\\u%04x", code);
      text += escape.data();
    } else {
      text += byte;
    }
  }
  return text + '"';
}

std::string json_array(const std::vector<std::string> &strings) {
  std::string text;
  for (const std::string &string : strings) {
    text += text.empty() ? "" : ",";
    text += json_string(string);
  }
  return "[" + text + "]";
}

std::string json_array(const std::vector<int> &numbers) {
  std::string text;
  for (const int number : numbers) {
    text += text.empty() ? "" : ",";
    text += std::to_string(number);
  }
  return "[" + text + "]";
}

} // namespace standin
