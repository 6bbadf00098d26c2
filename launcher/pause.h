/// Pauses whose length does not depend on the signals that arrive meanwhile. A sleep that is called
/// again with the remaining time after each signal may never end under a flood of them, because the
/// remaining time is rounded up at each call.
#pragma once

#include <atomic>
#include <chrono>

/// Returns once `length` has passed on the steady clock.
void pause_for(std::chrono::milliseconds length);

/// Returns once `length` has passed, or at once when `running` is false or a signal handler on this
/// thread clears it. If another thread clears it, this returns only after `length`.
void pause_while(const std::atomic<bool> &running, std::chrono::milliseconds length);
