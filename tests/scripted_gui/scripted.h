/// A menu-bar interface without a menu bar, for tests: see scripted.cpp.
#pragma once

#include "tdgui.h"

namespace scripted {

/// Prepares the launcher's process as the test wants, before the interface is looked for.
void prepare();

/// What the libraries of an interface do when they are loaded.
void load();

/// Whether the test that has started the launcher wants the interface to be shown.
bool is_available();

/// In place of tdgui::run: does what the test asks for, until the test ends it.
void run(const tdgui::GuiConfig &gui);

/// Ends the process with a message about `what` and errno.
[[noreturn]] void give_up(const char *what);

// What differs between systems: system_linux.cpp and system_macos.cpp.

/// Whether the calling thread is the process's first.
bool on_main_thread();

/// Makes every start of another thread fail as when the system has no more threads. Processes can
/// still be created.
void forbid_threads();

} // namespace scripted
