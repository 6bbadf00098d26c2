#include "own_process.h"
#include "terminal.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <gtest/gtest.h>
#include <sys/ioctl.h>

namespace {

/// The controlling terminal and the standard input of this process, which leads a session of its
/// own. It is closed when the process ends.
struct Terminal {
  int screen = -1; // the other end, as a terminal's window has it
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

  [[nodiscard]] termios mode() const {
    termios found{};
    tcgetattr(device, &found);
    return found;
  }

  void set_mode(const termios &mode) const { tcsetattr(device, TCSANOW, &mode); }

  /// As set by a program that draws and reads every key, with some special keys turned off, too.
  void make_raw() const {
    termios raw = mode();
    raw.c_lflag &= ~static_cast<tcflag_t>(ISIG | ICANON | ECHO);
    raw.c_iflag &= ~static_cast<tcflag_t>(ICRNL);
    raw.c_oflag &= ~static_cast<tcflag_t>(OPOST);
    raw.c_cc[VINTR] = _POSIX_VDISABLE;
    set_mode(raw);
  }

  [[nodiscard]] bool is_raw() const {
    return (mode().c_lflag & (ISIG | ICANON)) == 0 && mode().c_cc[VINTR] == _POSIX_VDISABLE;
  }

  [[nodiscard]] bool has_mode(const termios &expected) const {
    const termios found = mode();
    return found.c_iflag == expected.c_iflag && found.c_oflag == expected.c_oflag &&
           found.c_lflag == expected.c_lflag &&
           std::memcmp(found.c_cc, expected.c_cc, sizeof expected.c_cc) == 0;
  }
};

/// Runs `check` in a process that `Terminal` controls; true when it returned true there.
template <typename Check> bool holds_at_a_terminal(Check check) {
  return holds_in_a_process_of_its_own([&] {
    const Terminal terminal;
    return terminal.device >= 0 && check(terminal);
  });
}

/// Runs `check` in the background of the terminal; also false if it was suspended there.
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

/// Calls `check` while another process group has the foreground of this process's terminal.
template <typename Check> bool holds_without_the_foreground(Check check) {
  const pid_t other = fork();
  if (other == 0) {
    for (;;) {
      pause();
    }
  }
  setpgid(other, other);
  const bool moved = tcsetpgrp(STDIN_FILENO, other) == 0;
  const bool holds = check();
  tcsetpgrp(STDIN_FILENO, getpgrp());
  kill(other, SIGKILL);
  waitpid(other, nullptr, 0);
  return moved && holds;
}

void start_user(SharedTerminal &shared) {
  shared.remember_mode();
  shared.add_user();
}

TEST(TerminalAccess, IsThatOfTheProcessGroup) {
  EXPECT_TRUE(holds_in_a_process_of_its_own([] {
    setsid();
    return terminal_access() == TerminalAccess::none;
  }));
  EXPECT_TRUE(holds_at_a_terminal([](const Terminal & /*terminal*/) {
    return terminal_access() == TerminalAccess::foreground &&
           holds_in_the_background([] { return terminal_access() == TerminalAccess::background; });
  }));
}

TEST(TerminalAccess, IsBackgroundWhenTheTerminalCannotBeOpened) {
  EXPECT_TRUE(holds_at_a_terminal([](const Terminal & /*terminal*/) {
    const rlimit none{0, 0};
    return setrlimit(RLIMIT_NOFILE, &none) == 0 && terminal_access() == TerminalAccess::background;
  }));
}

TEST(SharedTerminal, ItsKeysWorkAfterOneOfItsUsersAndItsModeIsBackAfterTheLast) {
  EXPECT_TRUE(holds_at_a_terminal([](const Terminal &terminal) {
    const termios before = terminal.mode();
    SharedTerminal shared;
    start_user(shared);
    terminal.make_raw();
    start_user(shared); // must not save this mode
    shared.remove_user();
    termios expected = before;
    expected.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    expected.c_iflag &= ~static_cast<tcflag_t>(ICRNL);
    expected.c_oflag &= ~static_cast<tcflag_t>(OPOST);
    const bool keys_alone = terminal.has_mode(expected);
    shared.remove_user();
    return keys_alone && terminal.has_mode(before);
  }));
}

TEST(SharedTerminal, SavesTheModeBeforeTheFirstUser) {
  EXPECT_TRUE(holds_at_a_terminal([](const Terminal &terminal) {
    const termios before = terminal.mode();
    SharedTerminal shared;
    start_user(shared);
    shared.remove_user();
    terminal.make_raw();
    start_user(shared);
    shared.remove_user();
    return terminal.has_mode(before);
  }));
}

TEST(SharedTerminal, ItsModeIsBackAtTheEnd) {
  EXPECT_TRUE(holds_at_a_terminal([](const Terminal &terminal) {
    const termios before = terminal.mode();
    {
      SharedTerminal shared;
      start_user(shared);
      terminal.make_raw();
    }
    return terminal.has_mode(before);
  }));
}

TEST(SharedTerminal, WithoutUsersItsModeStays) {
  EXPECT_TRUE(holds_at_a_terminal([](const Terminal &terminal) {
    {
      const SharedTerminal shared;
      terminal.make_raw();
    }
    return terminal.is_raw();
  }));
}

TEST(SharedTerminal, IsTheControllingOneWhenTheInputIsNone) {
  EXPECT_TRUE(holds_at_a_terminal([](const Terminal &terminal) {
    const termios before = terminal.mode();
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    SharedTerminal shared;
    start_user(shared);
    terminal.make_raw();
    shared.remove_user();
    return terminal.has_mode(before);
  }));
}

TEST(SharedTerminal, IsUnchangedInTheBackground) {
  EXPECT_TRUE(holds_at_a_terminal([](const Terminal &terminal) {
    auto shared = std::make_unique<SharedTerminal>();
    start_user(*shared);
    start_user(*shared);
    terminal.make_raw();
    return holds_in_the_background([&] {
      shared->remove_user();
      shared->remove_user();
      shared.reset();
      return terminal.is_raw();
    });
  }));
}

TEST(SharedTerminal, SavesNoModeInTheBackground) {
  EXPECT_TRUE(holds_at_a_terminal([](const Terminal &terminal) {
    (void)signal(SIGTTOU, SIG_IGN); // the test itself changes the mode
    const termios before = terminal.mode();
    SharedTerminal shared;
    const bool left_alone = holds_without_the_foreground([&] {
      terminal.make_raw();
      start_user(shared);
      shared.remove_user();
      return terminal.is_raw();
    });
    terminal.set_mode(before);
    start_user(shared);
    terminal.make_raw();
    shared.remove_user();
    return left_alone && terminal.has_mode(before);
  }));
}

TEST(SharedTerminal, KeysThatSentNoSignalsBeforeSendNoneAfterwards) {
  EXPECT_TRUE(holds_at_a_terminal([](const Terminal &terminal) {
    terminal.make_raw();
    SharedTerminal shared;
    start_user(shared);
    start_user(shared);
    shared.remove_user();
    return terminal.is_raw();
  }));
}

TEST(SharedTerminal, AModeThatCouldNotBeSavedIsNotRestored) {
  EXPECT_TRUE(holds_at_a_terminal([](const Terminal &terminal) {
    SharedTerminal shared;
    shared.add_user(); // as if started in the background
    terminal.make_raw();
    termios expected = terminal.mode();
    expected.c_lflag |= ISIG;
    start_user(shared); // the mode is the other one's
    shared.remove_user();
    shared.remove_user();
    return terminal.has_mode(expected);
  }));
}

TEST(SharedTerminal, MayBeGone) {
  EXPECT_TRUE(holds_at_a_terminal([](const Terminal &terminal) {
    (void)signal(SIGHUP, SIG_IGN);
    SharedTerminal shared;
    start_user(shared);
    close(terminal.screen);
    shared.remove_user();
    start_user(shared);
    return terminal_access() == TerminalAccess::none;
  }));
}

} // namespace
