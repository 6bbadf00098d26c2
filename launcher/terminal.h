/// The controlling terminal: where this process stands at it, and its mode while components share
/// it.
#pragma once

#include <optional>

#include <termios.h>

/// Where the group of this process stands at its controlling terminal.
enum class TerminalPlace {
  none,       ///< there is no such terminal, so no key of one can stop or end the group
  background, ///< also where the system does not tell
  foreground,
};

/// Asks anew at each call: a shell moves its jobs, and a terminal can be closed.
TerminalPlace terminal_place();

/// Repairs what processes that share the terminal leave behind in its mode. The terminal is
/// standard input, or the controlling one where standard input is none. The mode is read and
/// changed only in its foreground, never waiting for output; nothing happens where there is no
/// terminal (any more). Used by one thread at a time.
class SharedTerminal {
public:
  SharedTerminal() = default;
  SharedTerminal(const SharedTerminal &) = delete;
  SharedTerminal &operator=(const SharedTerminal &) = delete;
  /// Gives the terminal its mode back, if it was shared.
  ~SharedTerminal();

  /// To be called before a process is started that is to share the terminal. Remembers the mode as
  /// it is before the first one, once. In the background the mode is another program's, so then it
  /// waits for a later start while no such process runs.
  void remember_mode();

  /// The process was started.
  void add_user() { ++users_; }

  /// One of the processes has ended. Ctrl-C, Ctrl-Z and Ctrl-\ work as they did before, whatever
  /// mode it left; after the last one the whole mode is as it was.
  void remove_user();

private:
  std::optional<termios> mode_;
  int users_ = 0;
};
