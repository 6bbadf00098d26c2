#include "child.h"

#include "pause.h"
#include "platform.h"

#include <cerrno>
#include <chrono>
#include <csignal>

#include <fcntl.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

// A Mac's headers do not declare it. NOLINTNEXTLINE(readability-redundant-declaration)
extern char **environ;

namespace {

constexpr int stop_attempts = 40;
constexpr std::chrono::milliseconds stop_interval{100};
constexpr int status_not_executed = 127;

std::vector<char *> g_environment; // with its final null; empty: none is saved

std::vector<char *> argument_vector(Child &child) {
  std::vector<char *> argv;
  argv.reserve(child.args.size() + 2);
  argv.push_back(child.path.data());
  for (std::string &arg : child.args) {
    argv.push_back(arg.data());
  }
  argv.push_back(nullptr);
  return argv;
}

/// What the new process needs to know.
struct NewProcess {
  const Child &child;
  char *const *argv;
  char *const *environment;
  SpawnMode mode;
  pid_t parent;
  bool ends_with_parent;
  int highest_descriptor; // of a separate process only
  sigset_t mask;          // as it was before the fork
};

// From here to execute() everything runs in the new process, where only async-signal-safe calls
// are allowed: another thread may have held any lock at the moment of the fork. Its memory may be
// the parent's own, where other threads go on, so nothing but this thread's stack and errno is
// changed there.

void detach_from_terminal() {
  const int null = open("/dev/null", O_RDWR);
  if (null >= 0) {
    dup2(null, STDIN_FILENO);
    dup2(null, STDOUT_FILENO);
    dup2(null, STDERR_FILENO);
    if (null > STDERR_FILENO) {
      close(null);
    }
  }
  setsid();
}

/// Executing a program removes handlers too, but a signal before that would run the launcher's
/// handler in the new process and be lost.
void remove_handler(int number) {
  if (signal(number, SIG_DFL) == SIG_IGN) {
    signal(number, SIG_IGN); // discards a signal that is pending: all signals are blocked
  }
}

/// `argument` is the NewProcess.
[[noreturn]] void execute(const void *argument) {
  const auto &process = *static_cast<const NewProcess *>(argument);
  restore_signal_actions();
  if (process.child.quiet) {
    detach_from_terminal();
  }
  if (process.mode == SpawnMode::separate) {
    platform::close_descriptors(STDERR_FILENO + 1, process.highest_descriptor);
  }
  if (process.ends_with_parent) {
    platform::end_with_parent(process.parent, SIGTERM);
  }
  sigprocmask(SIG_SETMASK, &process.mask, nullptr);
  execve(process.argv[0], process.argv, process.environment);
  _exit(status_not_executed);
}

bool is_ignored(int number) {
  struct sigaction action = {};
  return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void forget_process(Child &child) {
  child.pid = -1;
  if (child.terminal != nullptr) {
    child.terminal->remove_user();
  }
}

} // namespace

void keep_environment() {
  g_environment.clear();
  for (char **entry = environ; *entry != nullptr; ++entry) {
    g_environment.push_back(*entry);
  }
  g_environment.push_back(nullptr);
}

bool spawn(Child &child, SpawnMode mode) {
  if (access(child.path.c_str(), X_OK) != 0) {
    return false;
  }
  const std::vector<char *> argv = argument_vector(child);
  char *const *environment = g_environment.empty() ? environ : g_environment.data();
  NewProcess process{child, argv.data(), environment, mode, getpid(), false, 0, {}};
  const TerminalAccess terminal = child.quiet ? TerminalAccess::none : terminal_access();
  if (mode == SpawnMode::separate) {
    process.highest_descriptor = platform::highest_descriptor();
  } else {
    process.ends_with_parent = terminal != TerminalAccess::foreground || is_ignored(SIGINT);
  }
  if (child.terminal != nullptr) {
    child.terminal->remember_mode();
  }
  // A quiet process leaves the terminal's session before its signals are unblocked.
  const bool can_be_suspended = terminal != TerminalAccess::none;
  const pid_t pid = fork_with_signals_blocked(execute, &process, can_be_suspended, process.mask);
  if (pid < 0) {
    return false;
  }
  child.pid = pid;
  if (child.terminal != nullptr) {
    child.terminal->add_user();
  }
  return true;
}

bool reap(Child &child) {
  if (child.pid == -1) {
    return true;
  }
  int status = 0;
  // 0: it still runs. A failure (ECHILD: it was reaped elsewhere) does not mean that it has ended,
  // so it counts as running, too.
  if (waitpid(child.pid, &status, WNOHANG) != child.pid) {
    return false;
  }
  forget_process(child);
  return true;
}

void stop(Child &child) {
  if (child.pid == -1) {
    return;
  }
  // ESRCH: it was reaped elsewhere; then every poll below fails as well.
  kill(child.pid, SIGTERM);
  for (int attempt = 0; attempt < stop_attempts; ++attempt) {
    if (reap(child)) {
      return;
    }
    pause_for(stop_interval);
  }
  kill(child.pid, SIGKILL);
  wait_for_exit(child);
}

std::optional<int> wait_for_exit(Child &child) {
  int status = 0;
  pid_t ended = -1;
  do {
    ended = waitpid(child.pid, &status, 0);
    // EINTR: a signal with a handler arrived here; the process still runs.
  } while (ended == -1 && errno == EINTR);
  forget_process(child);
  return ended == -1 ? std::nullopt : std::optional(status);
}

pid_t fork_with_signals_blocked(void (*execute)(const void *argument), const void *argument,
                                bool can_be_suspended, sigset_t &mask) {
  // A signal that reached the new process before it has its own signal actions would run the
  // launcher's handler there, perhaps in the launcher's memory, and be lost: a stop right after a
  // start would then end with SIGKILL. So all signals stay blocked there until then, and here until
  // fork_to_execute() returns.
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &mask);
  const pid_t pid = platform::fork_to_execute(execute, argument, can_be_suspended);
  pthread_sigmask(SIG_SETMASK, &mask, nullptr);
  return pid;
}

void restore_signal_actions() {
  signal(SIGINT, SIG_DFL);
  signal(SIGTERM, SIG_DFL);
  remove_handler(SIGHUP);
  remove_handler(SIGQUIT);
}
