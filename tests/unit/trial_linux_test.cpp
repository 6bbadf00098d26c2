#include "forbidden_call.h"
#include "own_process.h"
#include "trial.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/syscall.h>

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds ample{60000};
const std::atomic<bool> g_on{true};

/// What finish_trial() returns for an attempt, -1 for nothing.
int status_of(int (*attempt)(const void *argument), const void *argument = nullptr,
              milliseconds limit = ample, const std::atomic<bool> &running = g_on) {
  const pid_t trial = start_trial(attempt, argument);
  EXPECT_GT(trial, 0);
  const std::optional<int> status = finish_trial(trial, limit, running);
  EXPECT_EQ(waitpid(trial, nullptr, WNOHANG), -1) << "it was not reaped";
  return status.value_or(-1);
}

int wait_for_ever(const void * /*argument*/) {
  sigset_t all; // as a toolkit does while it opens the display
  sigfillset(&all);
  sigprocmask(SIG_SETMASK, &all, nullptr);
  for (;;) {
    pause();
  }
}

TEST(Trial, EndsWithTheResultOfTheAttempt) {
  for (const int result : {0, 5}) {
    const int status =
        status_of([](const void *wanted) { return *static_cast<const int *>(wanted); }, &result);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), result);
  }
}

TEST(Trial, EndsBySignalsOfItsOwn) {
  const int status = status_of([](const void * /*argument*/) { return raise(SIGKILL); });
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGKILL);
}

TEST(Trial, RunsNoExitHandlerOfItsParentHoweverItEnds) {
  static std::array<int, 2> s_pipe{};
  ASSERT_EQ(pipe(s_pipe.data()), 0);
  EXPECT_TRUE(holds_in_a_process_of_its_own([] {
    dup2(s_pipe[1], STDERR_FILENO);
    std::atexit([] { (void)write(STDERR_FILENO, "called", 6); });
    return status_of([](const void * /*argument*/) { return 0; }) == 0 &&
           WEXITSTATUS(status_of([](const void * /*argument*/) -> int { std::exit(0); })) ==
               EXIT_FAILURE;
  }));
  pollfd written{s_pipe[0], POLLIN, 0};
  EXPECT_EQ(poll(&written, 1, 0), 0);
  close(s_pipe[0]);
  close(s_pipe[1]);
}

TEST(Trial, HasSessionSignalsAndDescriptorsOfItsOwn) {
  const int descriptor = open("/dev/null", O_RDONLY); // deliberately without O_CLOEXEC
  const auto handler = [](int) {};
  (void)signal(SIGTERM, handler);
  (void)signal(SIGHUP, handler);
  const int status = status_of(
      [](const void *parents) {
        sigset_t blocked;
        sigprocmask(SIG_SETMASK, nullptr, &blocked);
        const bool is_reset = signal(SIGTERM, SIG_DFL) == SIG_DFL &&
                              signal(SIGHUP, SIG_DFL) == SIG_DFL &&
                              sigismember(&blocked, SIGTERM) == 0;
        const bool is_closed = fcntl(*static_cast<const int *>(parents), F_GETFD) == -1;
        const bool has_streams = fcntl(STDIN_FILENO, F_GETFD) != -1 &&
                                 fcntl(STDOUT_FILENO, F_GETFD) != -1 &&
                                 fcntl(STDERR_FILENO, F_GETFD) != -1;
        return is_reset && is_closed && has_streams && getsid(0) == getpid() ? 0 : 1;
      },
      &descriptor);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(fcntl(descriptor, F_GETFD), 0);
  EXPECT_EQ(signal(SIGTERM, SIG_DFL), +handler);
  EXPECT_EQ(signal(SIGHUP, SIG_DFL), +handler);
  close(descriptor);
}

TEST(Trial, IsKilledAtTheLimit) {
  const auto before = steady_clock::now();
  EXPECT_EQ(status_of(wait_for_ever, nullptr, milliseconds(250)), -1);
  EXPECT_GE(steady_clock::now() - before, milliseconds(250));
}

TEST(Trial, IsKilledAtTheLimitWhenItIsSuspended) {
  const auto suspend = [](const void * /*argument*/) { return raise(SIGSTOP); };
  EXPECT_EQ(status_of(suspend, nullptr, milliseconds(100)), -1);
}

TEST(Trial, IsKilledWhenTheRunEnds) {
  const std::atomic<bool> off{false};
  const auto before = steady_clock::now();
  EXPECT_EQ(status_of(wait_for_ever, nullptr, ample, off), -1);
  EXPECT_LT(steady_clock::now() - before, ample);
}

TEST(Trial, EndIsNoticedAtOnce) {
  constexpr int count = 20;
  const auto before = steady_clock::now();
  for (int i = 0; i < count; ++i) {
    EXPECT_EQ(status_of([](const void * /*argument*/) { return usleep(2000); }), 0);
  }
  EXPECT_LT(steady_clock::now() - before, count * milliseconds(75)) << "each took a whole pause";
}

TEST(Trial, EndIsNoticedOnAnOldKernelToo) {
  EXPECT_TRUE(holds_in_a_process_of_its_own([] {
    return forbid_call(SYS_pidfd_open, ENOSYS) &&
           status_of([](const void * /*argument*/) { return usleep(2000); }) == 0;
  }));
}

TEST(Trial, IsNotStartedWithoutProcesses) {
  EXPECT_TRUE(holds_in_a_process_of_its_own([] {
    return forbid_call(SYS_clone, EAGAIN) && start_trial(wait_for_ever, nullptr) == -1 &&
           errno == EAGAIN;
  }));
}

} // namespace
