#include "terminal.h"

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

TerminalPlace terminal_place() {
  const int terminal = open("/dev/tty", O_RDONLY | O_NOCTTY | O_CLOEXEC);
  if (terminal < 0) {
    // Any other error, such as too many open files, says nothing about the terminal.
    return errno == ENXIO ? TerminalPlace::none : TerminalPlace::background;
  }
  const bool foreground = tcgetpgrp(terminal) == getpgrp();
  close(terminal);
  return foreground ? TerminalPlace::foreground : TerminalPlace::background;
}
