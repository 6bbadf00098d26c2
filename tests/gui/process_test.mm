// The application must not interfere with the process's signals and children.

#include "interface.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace gui_test;

namespace {

volatile std::sig_atomic_t g_last_signal;
void note_signal(int number) {
  g_last_signal = number;
}

constexpr int handled_signals[] = {SIGINT, SIGTERM, SIGHUP};

/// Installs signal handlers before any test makes the application, as the launcher does.
class Handlers : public testing::Environment {
public:
  void SetUp() override {
    for (int number : handled_signals) {
      std::signal(number, note_signal);
    }
  }
};

[[maybe_unused]] testing::Environment *const g_handlers =
    testing::AddGlobalTestEnvironment(new Handlers);

void (*current_handler(int number))(int) {
  struct sigaction action = {};
  sigaction(number, nullptr, &action);
  return action.sa_handler;
}

/// Whether a child has ended; it stays to be reaped.
bool is_zombie(pid_t child) {
  siginfo_t info = {};
  return waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
         info.si_pid == child;
}

} // namespace

TEST(Process, KeepsItsSignalHandlers) {
  run_interface(full_config(), [](Interface) {
    for (int number : handled_signals) {
      ASSERT_EQ(current_handler(number), note_signal) << number;
      g_last_signal = 0;
      raise(number);
      EXPECT_EQ(g_last_signal, number);
    }
  });
}

TEST(Process, KeepsItsChildrenAfterACopy) {
  run_interface(full_config(), [](Interface interface) {
    const auto child_handler = current_handler(SIGCHLD);
    filled(interface);
    choose(item_titled(interface.menu, @"Copy Dashboard Address"));
    EXPECT_EQ(current_handler(SIGCHLD), child_handler);
    const pid_t child = fork();
    if (child == 0) {
      _exit(7);
    }
    EXPECT_TRUE(run_loop_until([&] { return is_zombie(child); }));
    // A few more rounds, in which the application could reap it.
    int rounds = 0;
    run_loop_until([&] { return ++rounds > 5; });
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, WNOHANG), child);
    EXPECT_EQ(WEXITSTATUS(status), 7);
  });
}

TEST(Process, ACopyLeavesNoChildBehind) {
  run_interface(full_config(), [](Interface interface) {
    filled(interface);
    choose(item_titled(interface.menu, @"Copy Dashboard Address"));
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
  });
}
