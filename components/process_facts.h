/// What a process has inherited from the process that started it.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <sys/types.h>

namespace standin {

struct ProcessFacts {
  std::int64_t time_ns = 0; ///< monotonic_ns() when main() began
  pid_t ppid = 0;
  pid_t pgid = 0;
  pid_t sid = 0;
  std::vector<std::string> argv; ///< raw bytes, not always UTF-8
  std::array<bool, 3> is_terminal{};
  std::vector<std::string> standard_targets; ///< descriptor_target() of 0, 1 and 2
  std::vector<int> other_descriptors;        ///< open ones from 3 up, ascending
  std::vector<int> ignored_signals;          ///< ascending
  std::vector<int> blocked_signals;          ///< ascending
};

/// Collects the facts and changes nothing. Call it first in main().
ProcessFacts gather_process_facts(int argc, char **argv);

} // namespace standin
