#include "command_line.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

/// Where the value of a port option goes; null if `argument` is not a port option.
std::uint16_t *port_option(std::string_view argument, Options &options) {
  if (argument == "--http-port") {
    return &options.ports.http;
  }
  return argument == "--udp-port" ? &options.ports.udp : nullptr;
}

/// Applies an option that takes no value; false if `argument` is not one.
bool apply_switch(std::string_view argument, Options &options) {
  if (argument == "--no-sender") {
    options.run_sender = false;
  } else if (argument == "--no-receiver") {
    options.run_receiver = false;
  } else if (argument == "--browser") {
    options.open_browser = true;
  } else if (argument == "--no-browser") {
    options.open_browser = false;
  } else if (argument == "--verbose") {
    options.verbose = true;
  } else {
    return false;
  }
  return true;
}

} // namespace

Mode choose_mode(int argc, const char *const *argv) {
  if (argc < 2) {
    return Mode::all_in_one;
  }
  const std::string_view word = argv[1];
  if (word == "-h" || word == "--help") {
    return Mode::help;
  }
  const bool component = word == "hub" || word == "sender" || word == "receiver" || word == "align";
  return component ? Mode::pass_through : Mode::all_in_one;
}

const char *parse_options(int argc, const char *const *argv, Options &options) {
  for (int i = 1; i < argc; ++i) {
    std::uint16_t *port = port_option(argv[i], options);
    if (port != nullptr && i + 1 < argc) {
      ++i;
      *port = static_cast<std::uint16_t>(std::atoi(argv[i])); // no number gives 0, deliberately
    } else if (port != nullptr || !apply_switch(argv[i], options)) {
      return argv[i];
    }
  }
  return nullptr;
}

void print_usage() {
  std::fputs("Tandrel — all-in-one launcher\n"
             "\n"
             "  Tandrel                      start the hub, a receiver and a sender, then\n"
             "                                open the dashboard in your browser\n"
             "\n"
             "Options for that mode:\n"
             "  --no-sender                   don't offer this machine's audio (hub +\n"
             "                                receiver only)\n"
             "  --no-receiver                 don't play audio on this machine\n"
             "  --no-browser                  don't open a browser this run\n"
             "  --browser                     do open one, overriding a saved preference\n"
             "                                (the menu's \"Open Dashboard at Launch\" sets\n"
             "                                 the default, which persists)\n"
             "  --http-port <N>               dashboard port (default 4466)\n"
             "  --udp-port <N>                hub control port (default 4465)\n"
             "  --verbose                     let the children draw their own terminal UIs\n"
             "\n"
             "Running one component, exactly as the separate binaries do:\n"
             "  Tandrel hub [args...]              -> td_hub\n"
             "  Tandrel sender [args...]           -> td_sender\n"
             "  Tandrel receiver [args...]         -> td_receiver\n"
             "  Tandrel align [args...]            -> td_align\n"
             "\n"
             "Those forms pass every argument straight through, so existing scripts and\n"
             "service units keep working. The individual binaries also still ship.\n",
             stdout);
}
