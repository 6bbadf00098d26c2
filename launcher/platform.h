/// What differs between the systems the launcher runs on. For each system a file platform_*.cpp
/// implements it; the build chooses.
#pragma once

#include <string>

#include <sys/types.h>

namespace platform {

/// The path by which the running executable was started, as the system reports it: no links are
/// followed and no dots removed. Empty if the path is unknown or longer than 4095 bytes.
std::string executable_path();

/// Makes a new process that calls `execute` with `argument`. `execute` must not return and may call
/// only async-signal-safe functions, or anything in a copy of a process with a single thread.
/// Returns the id of the new process, -1 when none could be made.
///
/// With `can_be_suspended` the new process is a copy of this one. Otherwise it may use this one's
/// memory until it has executed a program or called _exit(), and this thread waits for that and
/// reacts to no signal but SIGKILL: if Ctrl-Z suspended the new process meanwhile, both would hang.
pid_t fork_to_execute(void (*execute)(const void *argument), const void *argument,
                      bool can_be_suspended);

/// A number that no descriptor of this process exceeds, whatever the limits were when it was
/// opened.
int highest_descriptor();

/// Closes the descriptors of this process from `first` to `last`. Async-signal-safe: for the time
/// between fork and exec, with `last` from highest_descriptor() before the fork.
void close_descriptors(int first, int last);

/// Arranges that this process gets the signal `number` when its parent process, `parent`, ends, or
/// at once if it has already ended. Does nothing on a system that cannot do that.
/// Async-signal-safe.
void end_with_parent(pid_t parent, int number);

/// The shell command that opens `url` in the default browser. `url` stands in double quotes and is
/// not escaped: the launcher makes it of digits, dots, colons and slashes. The command ends without
/// waiting for the browser to end.
std::string browser_command(const std::string &url);

/// The shell command that shows `message` in a critical alert headed "Tandrel" and ends when the
/// alert is dismissed, or at once if there is no tool to show one. `message` stands in single
/// quotes, so it must hold no single quote, which would end the quoting and let the rest run as a
/// command, and no NUL. Every other byte is passed on unchanged.
std::string alert_command(const std::string &message);

} // namespace platform
