/// SIGTERM and SIGINT as bytes in a pipe, so that a loop around poll() can obey them at once.
#pragma once

#include <functional>

namespace standin {

/// Catches SIGTERM and SIGINT. Returns the pipe's end that becomes readable when one arrives, or -1
/// with errno set. Of two that arrive together SIGINT comes first. Call it once, from the thread
/// that polls.
int catch_stop_signals();

/// The number of the next signal caught, or 0 when none is waiting. Never blocks.
int next_stop_signal(int pipe_end);

/// Runs `work` in a new thread that no signal interrupts, nor the threads that it starts. Throws
/// std::system_error when there can be no such thread.
void run_in_sheltered_thread(std::function<void()> work);

/// Ends the process by `signal` with its default effect and no core file. Returns when that effect
/// is not an end.
void die_by_signal(int signal);

} // namespace standin
