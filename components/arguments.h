/// Parsing a stand-in's command line.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace standin {

/// A required option with a value: "--name VALUE".
struct Option {
  std::string_view name; ///< with its dashes
  std::string *value;    ///< where to store the value; the last one given wins
};

/// True if "--help" is one of the arguments.
bool has_help_option(int argc, char **argv);

/// Stores the values of the options. Returns an error message, or an empty string on success. An
/// option that is missing, unknown or has no value is an error.
std::string parse_options(int argc, char **argv, const std::vector<Option> &options);

/// A port number, `lowest` to 65535. Empty if `text` is not one.
std::optional<int> parse_port(std::string_view text, int lowest);

} // namespace standin
