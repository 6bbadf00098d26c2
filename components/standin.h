/// The life that all stand-ins share: a start that is recorded, a wait that obeys signals and
/// misbehaviours, an end that is recorded.
#pragma once

#include "behaviour.h"
#include "program.h"
#include "record.h"
#include "status_line.h"

#include <chrono>
#include <string>

namespace standin {

using Clock = std::chrono::steady_clock;

/// A stand-in at work. Made by begin(); lives until the process ends.
struct Standin {
  Program program = Program::hub;
  Behaviour behaviour;
  Record record;
  int stop_pipe = -1;      ///< readable when a stop signal came
  Clock::time_point start; ///< when begin() was called
  StatusLine status_line;
};

/// Call it first in main(). Ends the process when the misbehaviours cannot be read (status 70) or
/// say exit-at-once.
Standin begin(Program program, int argc, char **argv);

/// Why wait_for() returned. `end`: a stop signal came (and is recorded) or exit-after is over; the
/// caller tidies up and calls end().
enum class Wake { time, readable, end };

/// Waits until `descriptor` is readable or has an error (-1: no descriptor), `until` is reached
/// (time_point::max(): never) or the program is to end.
Wake wait_for(const Standin &standin, int descriptor, Clock::time_point until);

/// Ends the process the orderly way: status 0, or as the misbehaviours say.
[[noreturn]] void end(Standin &standin);

/// Prints "<program>: <message>" to standard error and ends the process with `status`. From any
/// thread.
[[noreturn]] void fail(const Standin &standin, int status, const std::string &message);

/// Prints `text` to standard output and ends the process with status 0.
[[noreturn]] void print_and_end(const Standin &standin, const std::string &text);

/// The time since begin(), in whole seconds as format_duration() writes it.
std::string format_uptime(const Standin &standin);

} // namespace standin
