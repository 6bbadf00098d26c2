/// The state in which a process finds itself: what its starter gave it.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <sys/types.h>

namespace standin {

struct ProcessFacts {
  std::int64_t time_ns = 0; ///< when the facts were gathered, as by monotonic_ns()
  pid_t ppid = 0;
  pid_t pgid = 0;
  pid_t sid = 0;
  std::vector<std::string> argv; ///< any bytes
  std::array<bool, 3> is_terminal{};
  std::vector<std::string> standard_targets; ///< what 0, 1 and 2 are open on; empty: closed
  std::vector<int> other_descriptors;        ///< open, 3 and above, ascending
  std::vector<int> ignored_signals;          ///< ascending
  std::vector<int> blocked_signals;          ///< ascending
};

/// Gathers the facts and changes nothing. Call it first in main().
ProcessFacts gather_process_facts(int argc, char **argv);

/// CLOCK_MONOTONIC in nanoseconds.
std::int64_t monotonic_ns();

} // namespace standin
