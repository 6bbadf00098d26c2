/// Keeps GNUstep from interfering with the signal handlers, children and arguments of its process.
#pragma once

namespace td {

/// Call once, on the main thread, before any other use of AppKit. Afterwards GNUstep replaces no
/// signal handler, waits for no child that it did not start, reads no program arguments, starts no
/// notification server, and shows no icon window.
void prepare_process();

} // namespace td
