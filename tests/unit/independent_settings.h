/// A second implementation of the settings file's rules to compare the launcher's with: this one
/// uses bytes and std::from_chars, that one C strings and std::strtol. And texts to try both on.
#pragma once

#include "settings.h"

#include <charconv>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

/// The text from the first colon after a key on; empty without the key or the colon.
inline std::string_view from_colon(std::string_view text, std::string_view key) {
  const std::size_t at = text.find(key);
  const std::size_t colon = at == std::string_view::npos ? at : text.find(':', at);
  return colon == std::string_view::npos ? "" : text.substr(colon);
}

/// The port after the colon that `rest` begins with; the default where there is no number from 1 to
/// 65535, however many digits it has.
inline std::uint16_t port_after_colon(std::string_view rest, std::uint16_t default_value) {
  const std::size_t first = rest.find_first_not_of(" \t\n\v\f\r", 1);
  if (rest.empty() || first == std::string_view::npos) {
    return default_value;
  }
  rest.remove_prefix(first);
  if (rest.front() == '+' && rest.substr(1, 1) != "-") { // std::from_chars takes no plus
    rest.remove_prefix(1);
  }
  std::uint16_t value = 0; // takes no minus; stays 0 on any error
  std::from_chars(rest.data(), rest.data() + rest.size(), value);
  return value == 0 ? default_value : value;
}

inline Settings read_independently(std::string_view bytes, bool open_browser) {
  std::string_view text = bytes.substr(0, 511);
  text = text.substr(0, text.find('\0'));
  Settings settings;
  settings.ports.http = port_after_colon(from_colon(text, "\"http_port\""), 4466);
  settings.ports.udp = port_after_colon(from_colon(text, "\"udp_port\""), 4465);
  const std::string_view rest = from_colon(text, "\"open_browser\"");
  const std::size_t value = rest.find_first_not_of("\t :");
  const bool off = value != std::string_view::npos && rest.substr(value, 5) == "false";
  settings.open_browser = rest.empty() ? open_browser : !off;
  return settings;
}

/// Random texts made of the parts that the rules depend on; the same ones in every run.
class RandomSettingsTexts {
public:
  std::string next() {
    std::string text;
    for (std::uint64_t left = below(11); left > 0; --left) {
      text += piece();
    }
    return text;
  }

private:
  using Choices = std::vector<std::string>;

  std::uint64_t below(std::uint64_t end) { return m_random() % end; }
  std::string one_of(const Choices &choices) { return choices[below(choices.size())]; }

  std::string key() {
    return one_of({"\"http_port\"", "\"udp_port\"", "\"open_browser\"", "\"http_port", "udp_port"});
  }
  std::string mark() {
    return one_of({":", ":", ": ", ",", "\n", "\t", " ", "\"", "{", "}", "-", "+"});
  }
  std::string number() {
    if (below(2) == 0) {
      return std::to_string(static_cast<std::int64_t>(below(210'001)) - 70'000);
    }
    // Up to 22 digits, more than 64 bits can hold.
    std::string digits = below(2) == 0 ? "-" : "";
    for (std::uint64_t left = below(22) + 1; left > 0; --left) {
      digits += static_cast<char>('0' + below(10));
    }
    return digits;
  }
  std::string value() {
    switch (below(3)) {
    case 0:
      return number();
    case 1:
      return one_of({"0", "1", "65535", "65536"});
    default:
      return one_of({"false", "true", "False", "null", "\"false\""});
    }
  }
  std::string bytes() {
    std::string some;
    for (std::uint64_t left = below(7); left > 0; --left) {
      some += static_cast<char>(below(256));
    }
    return some;
  }
  std::string entry() {
    const std::string after_key = below(2) == 0 ? ":" : mark();
    return key() + after_key + (below(2) == 0 ? mark() : "") + value();
  }
  std::string piece() {
    switch (below(9)) {
    case 0:
      return key();
    case 1:
      return mark();
    case 2:
      return value();
    case 3:
      return below(4) == 0 ? std::string(1, '\0') : bytes();
    case 4:
      return below(4) == 0 ? std::string(440 + below(72), ' ') : bytes();
    default:
      return entry();
    }
  }

  std::mt19937_64 m_random{1}; // NOLINT(cert-msc32-c,cert-msc51-cpp): the same texts in every run
};
