/// Signals: a pipe that reports SIGTERM and SIGINT, so that poll() can wait for them.
#pragma once

#include <functional>

namespace standin {

/// Installs handlers for SIGTERM and SIGINT. Returns the read end of a pipe that becomes readable
/// when one arrives, or -1 with errno set. The pipe stays open until the process ends. If both
/// signals are pending at once, SIGINT is reported first. Call it once, from the thread that polls.
int catch_stop_signals();

/// Takes the number of the next signal from the pipe. Returns 0 if there is none. Never blocks.
int next_stop_signal(int read_end);

/// Runs `work` in a new, detached thread with all signals blocked. Threads that it starts inherit
/// this. Throws std::system_error if the thread cannot be created.
void start_thread_with_signals_blocked(std::function<void()> work);

/// Ends the process by `signal` with its default action, but without a core file. Returns only if
/// the default action does not end a process.
void die_by_signal(int signal);

} // namespace standin
