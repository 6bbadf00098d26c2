/// The record of one component's process, and, with `trial`, the only code of the launcher that
/// forks, waits or signals.
///
/// Nothing here takes a lock or prints: callers let one thread at a time use a record, and report
/// failures themselves.
#pragma once

#include "terminal.h"

#include <csignal>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

/// One component of the suite. A record is idle (`pid` is -1) or running. The destructor neither
/// signals nor waits: the owner stops every record first. Moved, never copied.
struct Child {
  std::string name;              ///< for look-ups and messages; matched byte for byte
  std::string path;              ///< full path of the executable; also the process's argv[0]
  std::vector<std::string> args; ///< what follows argv[0]
  std::int32_t pid = -1;         ///< process id, -1 when there is no process
  std::int32_t restarts = 0;     ///< automatic restarts since the last manual start
  bool critical = false;         ///< giving up on this one ends the whole run
  bool quiet = false;            ///< standard streams on /dev/null, in a session of its own
  bool supervised = false;       ///< wanted running: watched and restarted
  /// The terminal that the process shares and whose mode is restored after it; null: nothing is
  /// restored. Not owned.
  SharedTerminal *terminal = nullptr;

  Child() = default;
  Child(Child &&) = default;
  Child &operator=(Child &&) = default;
  Child(const Child &) = delete;
  Child &operator=(const Child &) = delete;
  ~Child() = default;
};

/// Components in start order.
using Children = std::vector<Child>;

/// What a new process shares with this one.
enum class SpawnMode {
  separate,     ///< only the descriptors 0, 1 and 2 (on /dev/null for a quiet record)
  pass_through, ///< all descriptors. If platform::end_with_parent() can do that, the new process is
                ///< also sent SIGTERM when this one ends, however it ends. Not in a terminal's
                ///< foreground, where Ctrl-C reaches both and the new process must be free to end
                ///< in its own way, unless SIGINT is ignored: then a shell without job control
                ///< has started this process in the background of a script
};

/// Starts the process of an idle record: the executable at `path` itself (no PATH search), with
/// SIGINT and SIGTERM at their defaults, every other disposition and the signal mask as they are
/// here, and the environment that keep_environment() has saved, or else that of this process.
///
/// True: a process exists and `pid` names it; whether the executable then ran is not known (if it
/// could not, the process ends with status 127). False: `path` is not executable for this user or
/// no process could be made; nothing was started and the record is unchanged.
bool spawn(Child &child, SpawnMode mode = SpawnMode::separate);

/// Saves the current environment for every process that spawn() starts later. A window system's
/// libraries may change the environment of this process, even while another thread starts a
/// component. Call it before both.
void keep_environment();

/// Asks, without blocking, whether the record's process has ended, and reaps it if so.
///
/// True: the record has no process now (`pid` is -1): it had none, or its process has ended and was
/// reaped; how it ended is not kept. False: the process still runs, or could not be asked about.
bool reap(Child &child);

/// Ends the record's process and reaps it; `pid` is -1 afterwards and nothing else has changed.
/// SIGTERM first; SIGKILL when it still runs after 40 polls 100 ms apart. Blocks for that long
/// at most, plus the time the kernel takes to end a killed process. An idle record returns at once.
void stop(Child &child);

/// Waits until the record's process has ended and reaps it, however often signals interrupt the
/// wait. Returns the status word of waitpid(2); empty when the process could not be waited for.
std::optional<int> wait_for_exit(Child &child);

/// Calls platform::fork_to_execute() so that all signals are blocked in the new process. Stores the
/// previous signal mask in `mask` before the fork; `execute` restores it once the new process has
/// its own signal actions.
pid_t fork_with_signals_blocked(void (*execute)(const void *argument), const void *argument,
                                bool can_be_suspended, sigset_t &mask);

/// For a new process: sets SIGINT and SIGTERM to their defaults and removes the handlers of SIGHUP
/// and SIGQUIT. Async-signal-safe.
void restore_signal_actions();
