/// Keeps GNUstep from interfering with the signal handlers, children and arguments of its process.
#pragma once

namespace td {

/// Makes the shared application, which loads GNUstep's display code and opens the display. Call
/// once, on the main thread, before any other use of AppKit. Afterwards GNUstep replaces no signal
/// handler, waits for no child that it did not start, reads no program arguments, starts no
/// notification server, and shows no icon window.
///
/// Throws std::runtime_error when GNUstep lacks a method that must be replaced, and GNUstep's own
/// exception when that cannot make the application. Signal actions and mask are then as before.
void make_application();

} // namespace td
