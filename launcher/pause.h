/// Pauses whose length does not depend on the signals that arrive meanwhile. A sleep that is called
/// again with the remaining time after each signal may never end under a flood of them, because the
/// remaining time is rounded up at each call.
#pragma once

#include <atomic>
#include <chrono>

/// Returns once `length` has passed on the steady clock.
void pause_for(std::chrono::milliseconds length);

/// Returns once `length` has passed or `running` is false, whichever comes first. A handler that
/// clears it ends the pause when it runs on this thread; set elsewhere, it is seen at the end.
void pause_while(const std::atomic<bool> &running, std::chrono::milliseconds length);
