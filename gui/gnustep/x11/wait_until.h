/// Waits for what other programs do to a window.
#pragma once

#include <chrono>
#include <ctime>

namespace td {

/// Calls `ask` every 5 ms until it returns true; returns false on timeout. The X server does not
/// always send an event for what other programs do to a window, hence the polling.
template <typename Ask> bool wait_until(std::chrono::seconds timeout, Ask ask) {
  constexpr timespec poll_interval{0, 5'000'000};
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  while (!ask()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    // A signal may end the sleep early (EINTR): then the next call comes sooner. Resuming the sleep
    // could take forever if signals keep arriving.
    nanosleep(&poll_interval, nullptr);
  }
  return true;
}

} // namespace td
