/// What GNUstep does to a process that has children, signal handlers and arguments of its own, and
/// must not.
#pragma once

namespace td {

/// Call once, on the main thread, before any other use of AppKit. Afterwards GNUstep neither
/// replaces a signal handler nor waits for a child it does not know, takes nothing from the
/// program's arguments, and shows no icon window.
void prepare_process();

} // namespace td
