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
/// by a run that has no terminal, before this process has a second thread: it may make a copy of
/// it.
void start_interface_search(const std::string &directory);

/// Waits for the end of that search, for ten seconds at most and while `running`. Returns what runs
/// the interface; null when none can be shown here, or it is not known whether. It may load
/// libraries, and says on standard error, in one line, what is wrong.
RunFunction find_interface(const std::string &directory, const std::atomic<bool> &running);

} // namespace platform
