#include "arguments.h"

#include "number.h"

#include <algorithm>

namespace standin {

bool has_help_option(int argc, char **argv) {
  return std::any_of(argv + std::min(argc, 1), argv + argc,
                     [](const char *argument) { return std::string_view(argument) == "--help"; });
}

std::string parse_options(int argc, char **argv, const std::vector<Option> &options) {
  for (int i = 1; i < argc; i += 2) {
    const std::string name = argv[i];
    const auto option = std::find_if(options.begin(), options.end(),
                                     [&](const Option &known) { return known.name == name; });
    if (option == options.end()) {
      return "unknown argument: " + name;
    }
    if (i + 1 == argc) {
      return name + " needs a value";
    }
    *option->value = argv[i + 1];
  }
  for (const Option &option : options) {
    if (option.value->empty()) {
      return std::string(option.name) + " is missing";
    }
  }
  return "";
}

std::optional<int> parse_port(std::string_view text, int lowest) {
  const std::optional<long> port = parse_number(text, lowest, 65535);
  if (!port) {
    return std::nullopt;
  }
  return static_cast<int>(*port);
}

} // namespace standin
