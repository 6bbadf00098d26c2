#include "terminal.h"

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace {

/// Whether this process is in the foreground of the terminal; not of one that controls another
/// session.
bool is_in_foreground(int terminal) {
  return tcgetpgrp(terminal) == getpgrp();
}

int open_controlling_terminal() {
  return open("/dev/tty", O_RDONLY | O_NOCTTY | O_CLOEXEC);
}

/// Calls `use` with the terminal's descriptor if this process is in the foreground there. All
/// signals are blocked meanwhile: otherwise Ctrl-Z could hand the terminal to the shell between the
/// check and the use, which would then stop this process by SIGTTOU.
template <typename Use> void in_foreground(Use use) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  const bool is_input = isatty(STDIN_FILENO) != 0;
  const int terminal = is_input ? STDIN_FILENO : open_controlling_terminal();
  if (terminal >= 0 && is_in_foreground(terminal)) {
    use(terminal);
  }
  if (terminal >= 0 && !is_input) {
    close(terminal);
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

/// Makes the keys that send signals work as in the mode `before`, or simply work if that is
/// unknown.
void restore_signal_keys(int terminal, const std::optional<termios> &before) {
  termios mode{};
  if (tcgetattr(terminal, &mode) != 0) {
    return; // it was closed
  }
  mode.c_lflag |= before ? before->c_lflag & ISIG : ISIG;
  for (const int key : {VINTR, VQUIT, VSUSP}) {
    mode.c_cc[key] = before ? before->c_cc[key] : mode.c_cc[key];
  }
  tcsetattr(terminal, TCSANOW, &mode);
}

} // namespace

TerminalAccess terminal_access() {
  const int terminal = open_controlling_terminal();
  if (terminal < 0) {
    // Any other error, such as too many open files, says nothing about the terminal.
    return errno == ENXIO ? TerminalAccess::none : TerminalAccess::background;
  }
  const bool foreground = is_in_foreground(terminal);
  close(terminal);
  return foreground ? TerminalAccess::foreground : TerminalAccess::background;
}

SharedTerminal::~SharedTerminal() {
  if (mode_) {
    in_foreground([this](int terminal) { tcsetattr(terminal, TCSANOW, &*mode_); });
  }
}

void SharedTerminal::remember_mode() {
  if (mode_ || users_ > 0) {
    return;
  }
  in_foreground([this](int terminal) {
    termios mode{};
    if (tcgetattr(terminal, &mode) == 0) {
      mode_ = mode;
    }
  });
}

void SharedTerminal::remove_user() {
  --users_;
  in_foreground([this](int terminal) {
    if (users_ == 0 && mode_) {
      tcsetattr(terminal, TCSANOW, &*mode_);
    } else {
      restore_signal_keys(terminal, mode_);
    }
  });
}
