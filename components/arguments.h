/// Reading a stand-in's command line.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace standin {

/// A required option with a value, "--name VALUE".
struct Option {
  std::string_view name; ///< with its dashes
  std::string *value;    ///< filled; the last one given wins
};

/// Whether "--help" is among the arguments.
bool asks_for_help(int argc, char **argv);

/// Fills the options' values. Returns what is wrong with the command line, or an empty text.
std::string read_options(int argc, char **argv, const std::vector<Option> &options);

/// A port in decimal digits, 1 to 65535.
std::optional<int> read_port(std::string_view text);

} // namespace standin
