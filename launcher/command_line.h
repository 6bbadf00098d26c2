/// Parsing the launcher's arguments.
#pragma once

#include "settings.h"

/// The kinds of run. The first argument alone decides.
enum class Mode {
  help,         ///< print the usage text
  pass_through, ///< run one component with the further arguments
  all_in_one,   ///< run the suite
};

/// Compares `argv[1]` whole and exactly; anything unknown, or nothing, is all_in_one.
Mode choose_mode(int argc, const char *const *argv);

/// The options of an all-in-one run. They hold for that run: none is saved, except the ports when a
/// control operation saves those in use.
struct Options {
  Ports ports;              ///< the low 16 bits of the numbers as typed; no range is checked
  bool open_browser;        ///< open the dashboard at the start
  bool verbose = false;     ///< components keep the terminal
  bool run_sender = true;   ///< false: the sender stays idle
  bool run_receiver = true; ///< false: the receiver stays idle

  explicit Options(const Settings &saved) : ports(saved.ports), open_browser(saved.open_browser) {}
};

/// Reads the arguments from `argv[1]` on into `options`. Returns null, or the first argument that
/// is not an option (or is a port option without its value); `options` then holds what came before.
const char *parse_options(int argc, const char *const *argv, Options &options);

/// Prints the usage text, 25 lines, to standard output.
void print_usage();
