/// A trial: a copy of this process that tries what may never return or may end the process, so that
/// neither concerns this one. Linux only; with `child` the only code that forks, waits and signals.
#pragma once

#include <atomic>
#include <chrono>
#include <optional>

#include <sys/types.h>

/// Calls `attempt` with `argument` in a copy of this process, which must have no other thread, and
/// has the copy end with the result as its status, or with EXIT_FAILURE when `attempt` calls
/// exit(). Returns the copy's process id, -1 when none could be made.
///
/// `attempt` may call everything. Of the copy's descriptors 0, 1 and 2 are open; it has a session
/// of its own, the signal actions that spawn() gives, and is killed when this process ends, in
/// whatever way. It runs no exit handler and writes nothing that it has from this process.
pid_t start_trial(int (*attempt)(const void *argument), const void *argument);

/// Waits until a trial has ended, for `limit` at most, and reaps it. Returns the status word of
/// waitpid(2). Empty when it did not end in time, or `running` was cleared (which shows after
/// 100 ms): it was killed then. Any thread, once.
std::optional<int> finish_trial(pid_t trial, std::chrono::milliseconds limit,
                                const std::atomic<bool> &running);
