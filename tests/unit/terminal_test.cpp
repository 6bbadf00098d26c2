#include "own_process.h"
#include "terminal.h"

#include <csignal>
#include <cstdlib>

#include <gtest/gtest.h>
#include <sys/ioctl.h>

namespace {

/// A terminal that controls this process, which leads a session of its own, and is its standard
/// input. The end of the process closes it.
struct Terminal {
  int screen = -1; // what a terminal's window holds
  int device = -1;

  Terminal() {
    setsid();
    screen = posix_openpt(O_RDWR | O_NOCTTY);
    if (grantpt(screen) == 0 && unlockpt(screen) == 0) {
      device = open(ptsname(screen), O_RDWR | O_NOCTTY);
    }
    ioctl(device, TIOCSCTTY, 0);
    dup2(device, STDIN_FILENO);
  }
};

/// Runs `check` in a process that `Terminal` controls; true when it returned true there.
template <typename Check> bool holds_at_a_terminal(Check check) {
  return holds_in_a_process_of_its_own([&] {
    const Terminal terminal;
    return terminal.device >= 0 && check(terminal);
  });
}

/// Runs `check` in the background of the terminal; false also when it was suspended there.
template <typename Check> bool holds_in_the_background(Check check) {
  const pid_t pid = fork();
  if (pid == 0) {
    setpgid(0, 0);
    _exit(check() ? 0 : 1);
  }
  int status = -1;
  waitpid(pid, &status, WUNTRACED);
  if (WIFSTOPPED(status)) {
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
  }
  return status == 0;
}

TEST(TerminalPlace, IsThatOfTheProcessGroup) {
  EXPECT_TRUE(holds_in_a_process_of_its_own([] {
    setsid();
    return terminal_place() == TerminalPlace::none;
  }));
  EXPECT_TRUE(holds_at_a_terminal([](const Terminal & /*terminal*/) {
    return terminal_place() == TerminalPlace::foreground &&
           holds_in_the_background([] { return terminal_place() == TerminalPlace::background; });
  }));
}

TEST(TerminalPlace, IsNotTakenForNoneWhenTheSystemDoesNotTell) {
  EXPECT_TRUE(holds_at_a_terminal([](const Terminal & /*terminal*/) {
    const rlimit none{0, 0};
    return setrlimit(RLIMIT_NOFILE, &none) == 0 && terminal_place() == TerminalPlace::background;
  }));
}

} // namespace
