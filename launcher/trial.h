/// A trial: a copy of this process that calls a function which may never return or may end the
/// process. Linux only; with `child` the only code that forks, waits and signals.
#pragma once

#include <atomic>
#include <chrono>
#include <optional>

#include <sys/types.h>

/// Calls `attempt` with `argument` in a copy of this process, which must have no other thread, and
/// has the copy end with the result as its status, or with EXIT_FAILURE when `attempt` calls
/// exit(). Returns the copy's process id, -1 when none could be made.
///
/// `attempt` may call anything. The copy has the descriptors 0, 1 and 2, a session of its own and
/// the signal actions that spawn() sets, and it is killed when this process ends, however it ends.
/// It runs none of this process's exit handlers and writes none of its buffered output.
pid_t start_trial(int (*attempt)(const void *argument), const void *argument);

/// Waits until a trial has ended, for `limit` at most, and reaps it. Returns the status word of
/// waitpid(2). Empty if it did not end in time or `running` was cleared (noticed within
/// 100 ms): it was then killed. May be called by any thread, once.
std::optional<int> finish_trial(pid_t trial, std::chrono::milliseconds limit,
                                const std::atomic<bool> &running);
