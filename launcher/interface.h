/// Finding the menu-bar interface. For each system a file interface_*.cpp implements it; the build
/// chooses.
#pragma once

#include "tdgui.h"

#include <atomic>
#include <string>

namespace platform {

/// Runs the menu-bar interface on the calling thread, which must be the main one: tdgui::run.
using RunFunction = void (*)(const tdgui::GuiConfig &config);

/// Begins to look for the interface. `directory` is the launcher's own, ending in "/". Called once,
/// by a run that has no terminal, before this process has a second thread, because it may fork.
void start_interface_search(const std::string &directory);

/// Waits for the end of that search, for ten seconds at most and only while `running`. Returns the
/// function that runs the interface, or null if none can be shown or the search has no result. May
/// load libraries. Reports a failure on standard error, in one line.
RunFunction find_interface(const std::string &directory, const std::atomic<bool> &running);

} // namespace platform
