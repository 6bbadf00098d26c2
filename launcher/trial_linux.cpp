#include "child.h"
#include "platform.h"
#include "trial.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr std::chrono::milliseconds poll_interval{100};

/// What the copy needs to know.
struct Trial {
  int (*attempt)(const void *argument);
  const void *argument;
  pid_t parent;
  int highest_descriptor;
  sigset_t mask; // as it was before the fork
};

/// `argument` is the Trial.
[[noreturn]] void run(const void *argument) {
  const auto &trial = *static_cast<const Trial *>(argument);
  platform::end_with_parent(trial.parent, SIGKILL); // libraries block other signals
  // exit() would go on with the handlers, the destructors and the buffers of the parent.
  std::atexit([] { _exit(EXIT_FAILURE); });
  restore_signal_actions();
  setsid(); // signals to the parent's group are for the parent to act upon
  platform::close_descriptors(STDERR_FILENO + 1, trial.highest_descriptor);
  sigprocmask(SIG_SETMASK, &trial.mask, nullptr);
  _exit(trial.attempt(trial.argument));
}

void kill_and_reap(pid_t pid) {
  kill(pid, SIGKILL);
  while (waitpid(pid, nullptr, 0) == -1 && errno == EINTR) {}
}

} // namespace

pid_t start_trial(int (*attempt)(const void *argument), const void *argument) {
  Trial trial{attempt, argument, getpid(), platform::highest_descriptor(), {}};
  return fork_with_signals_blocked(run, &trial, true, trial.mask);
}

std::optional<int> finish_trial(pid_t trial, std::chrono::milliseconds limit,
                                const std::atomic<bool> &running) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point end = Clock::now() + limit;
  // Readable once the trial has ended. Where the kernel (before 5.3) lacks it, poll() only pauses.
  pollfd ended{static_cast<int>(syscall(SYS_pidfd_open, trial, 0U)), POLLIN, 0};
  int status = 0;
  pid_t reaped = waitpid(trial, &status, WNOHANG);
  while (reaped == 0 && running && Clock::now() < end) {
    poll(&ended, 1, poll_interval.count());
    reaped = waitpid(trial, &status, WNOHANG);
  }
  if (reaped == 0) {
    kill_and_reap(trial);
  }
  if (ended.fd >= 0) {
    close(ended.fd);
  }
  return reaped == trial ? std::optional(status) : std::nullopt;
}
