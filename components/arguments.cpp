#include "arguments.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace standin {

bool asks_for_help(int argc, char **argv) {
  return std::any_of(argv + std::min(argc, 1), argv + argc,
                     [](const char *argument) { return std::string_view(argument) == "--help"; });
}

std::string read_options(int argc, char **argv, const std::vector<Option> &options) {
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

std::optional<int> read_port(std::string_view text) {
  int port = 0;
  const char *end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, port);
  if (error != std::errc{} || stop != end || port < 1 || port > 65535) {
    return std::nullopt;
  }
  return port;
}

} // namespace standin
