/// Keeps a display that does not answer, or that goes away, from leaving the process in a state
/// that nobody can end.
#pragma once

namespace td {

/// Whether the X server that the environment names accepts a connection. Returns false when there
/// is none or it refuses. Throws std::runtime_error when it has not answered within ten seconds, as
/// a stopped server never does, and std::system_error when no thread can be started. Main thread
/// only.
bool display_answers();

/// From now on the loss of Xlib's connection to the X server ends the process as Quit does: it
/// calls `quit`, unless that is null, and then exit(0). Without this call Xlib calls exit(1). May
/// be called again with another `quit`. Main thread only; `quit` is called on the thread that
/// notices the loss, which for GNUstep's connection is the main thread.
void quit_when_display_is_lost(void (*quit)());

/// The same for a connection that Xlib does not know of and whose loss the caller has noticed.
/// Main thread only.
[[noreturn]] void quit_without_display();

} // namespace td
