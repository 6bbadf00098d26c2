/// The controlling terminal: where this process stands at it.
#pragma once

/// Where the group of this process stands at its controlling terminal.
enum class TerminalPlace {
  none,       ///< there is no such terminal, so no key of one can stop or end the group
  background, ///< also where the system does not tell
  foreground,
};

/// Asks anew at each call: a shell moves its jobs, and a terminal can be closed.
TerminalPlace terminal_place();
