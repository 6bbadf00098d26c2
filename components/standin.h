/// What all stand-ins share: the start, the main loop's wait, and the end of the process.
#pragma once

#include "behaviour.h"
#include "clock.h"
#include "event_log.h"
#include "program.h"
#include "status_line.h"

#include <string>

namespace standin {

/// The state of a running stand-in. start_standin() returns it; keep it until the process ends.
struct Standin {
  Program program = Program::hub;
  Behaviour behaviour;
  EventLog event_log;
  int stop_pipe = -1;      ///< readable after SIGTERM or SIGINT
  Clock::time_point start; ///< when start_standin() was called
  StatusLine status_line;
};

/// Call it first in main(). Catches the stop signals, loads the misbehaviours, opens the event log
/// and logs the start. Ends the process with status 70 if a misbehaviour is wrong or the event log
/// cannot be opened, with status 1 if signals cannot be caught, and if the misbehaviour
/// exit-at-once is set.
Standin start_standin(Program program, int argc, char **argv);

/// Why wait_for() returned.
enum class WaitResult {
  timeout,  ///< the time `until` is reached
  readable, ///< `descriptor` is readable or has an error
  stop,     ///< a stop signal came and is logged, or exit-after has elapsed
};

/// Waits for one of these. No descriptor: -1. No time limit: time_point::max(). After `stop`, clean
/// up and call end_standin().
WaitResult wait_for(const Standin &standin, int descriptor, Clock::time_point until);

/// A normal exit: status 0, unless a misbehaviour changes it.
[[noreturn]] void end_standin(Standin &standin);

/// Prints "<program>: <message>" to standard error and exits with `status`. Call it from any
/// thread.
[[noreturn]] void fail(const Standin &standin, int status, const std::string &message);

/// Prints `text` to standard output and exits with status 0.
[[noreturn]] void print_and_exit(const Standin &standin, const std::string &text);

/// The time since start_standin() in whole seconds, as format_duration() writes it.
std::string format_uptime(const Standin &standin);

} // namespace standin
