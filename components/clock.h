/// The clocks of the stand-ins. Both are monotonic: setting the system's time does not change them.
#pragma once

#include <chrono>
#include <cstdint>

namespace standin {

/// For deadlines and durations inside one process.
using Clock = std::chrono::steady_clock;

/// CLOCK_MONOTONIC in nanoseconds: for event times, which are compared between processes.
std::int64_t monotonic_ns();

} // namespace standin
