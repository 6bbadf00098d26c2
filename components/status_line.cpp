#include "status_line.h"

#include <array>
#include <cstddef>
#include <cstdio>

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace standin {
namespace {

std::size_t terminal_width() {
  winsize size{};
  const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
  return known ? size.ws_col : 80;
}

/// False while output is paused with Ctrl-S: a write would block and delay the exit.
bool takes_output() {
  pollfd terminal{STDOUT_FILENO, POLLOUT, 0};
  return poll(&terminal, 1, 0) == 1 && (terminal.revents & POLLOUT) != 0;
}

void write_terminal(const std::string &text) {
  // Errors are ignored: the program works without its status line.
  [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
}

} // namespace

StatusLine make_status_line() {
  StatusLine line;
  line.on_terminal = isatty(STDOUT_FILENO) == 1;
  return line;
}

void draw_status_line(StatusLine &line, std::string_view text) {
  if (!line.on_terminal || !takes_output()) {
    return;
  }
  // The last column stays empty, because some terminals wrap after a character there.
  write_terminal("\r\033[K" + std::string(text.substr(0, terminal_width() - 1)));
  line.drawn = true;
}

void finish_status_line(StatusLine &line) {
  if (line.drawn && takes_output()) {
    write_terminal("\n");
  }
  line.drawn = false;
}

std::string format_duration(long long seconds) {
  std::array<char, 32> text{};
  const int rest = static_cast<int>(seconds % 60);
  const int minutes = static_cast<int>(seconds / 60 % 60);
  if (seconds < 3600) {
    std::snprintf(text.data(), text.size(), "%d:%02d", minutes, rest);
  } else {
    std::snprintf(text.data(), text.size(), "%lld:%02d:%02d", seconds / 3600, minutes, rest);
  }
  return text.data();
}

} // namespace standin
