/// The controlling terminal: whether this process is in its foreground, and restoring its mode
/// after components that share it.
#pragma once

#include <optional>

#include <termios.h>

/// How the process group of this process may use its controlling terminal.
enum class TerminalAccess {
  none,       ///< there is no such terminal, so no key of one can stop or end the group
  background, ///< also if the system does not say
  foreground,
};

/// Asks the system at each call: a shell moves its jobs, and a terminal can be closed.
TerminalAccess terminal_access();

/// Restores the terminal's mode after processes that share the terminal. The terminal is standard
/// input, or the controlling one if standard input is not a terminal. The mode is read and changed
/// only in the foreground, without waiting for output. Without a terminal nothing happens. Used by
/// one thread at a time.
class SharedTerminal {
public:
  SharedTerminal() = default;
  SharedTerminal(const SharedTerminal &) = delete;
  SharedTerminal &operator=(const SharedTerminal &) = delete;
  /// Restores the mode if the terminal was shared.
  ~SharedTerminal();

  /// To be called before each start of a process that shares the terminal. Saves the mode before
  /// the first one. In the background the mode is another program's, so there it is saved before a
  /// later start, when no such process runs.
  void remember_mode();

  /// The process was started.
  void add_user() { ++users_; }

  /// One of the processes has ended. Makes Ctrl-C, Ctrl-Z and Ctrl-\ work as before, whatever mode
  /// it left; after the last one restores the whole mode.
  void remove_user();

private:
  std::optional<termios> mode_;
  int users_ = 0;
};
