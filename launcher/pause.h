/// Pauses that last as long as they say, whatever signals arrive meanwhile. A plain sleep that is
/// taken up again after each signal may never end under a flood of them: each time the rest is
/// rounded up.
#pragma once

#include <atomic>
#include <chrono>

/// Returns once `length` has passed on the steady clock.
void pause_for(std::chrono::milliseconds length);

/// Returns once `length` has passed or `running` is false, whichever comes first. A handler that
/// clears it ends the pause when it runs on this thread; set elsewhere, it is seen at the end.
void pause_while(const std::atomic<bool> &running, std::chrono::milliseconds length);
