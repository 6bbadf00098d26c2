// The two functions that the launcher calls in the module.

#include "qt/application.h"
#include "tdgui.h"

#include <cstdio>
#include <cstdlib>

#define TDGUI_EXPORT extern "C" __attribute__((visibility("default")))

/// Whether the interface can be shown. Finds out by making the application, and where the display
/// does not work, the toolkit ends the process: so call it in a process made for that, which loads
/// this module, asks, and ends by _exit(). Where the answer is no, it either returns false, because
/// there is just no display, or says why on standard error, in one line, and ends the process by
/// _exit(EXIT_FAILURE). It may wait for the display as long as that takes. Main thread only.
TDGUI_EXPORT bool tdgui_available() noexcept {
  bool has_display = false;
  for (const char *variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
    const char *value = std::getenv(variable);
    has_display = has_display || (value != nullptr && *value != '\0');
  }
  if (has_display) {
    td::try_application();
  }
  return has_display;
}

/// tdgui::run for a launcher that loads this module at run time; call it when tdgui_available has
/// returned true, in this or in another process. Throws nothing, because the launcher has its own
/// C++ runtime: returns early when the interface fails.
TDGUI_EXPORT void tdgui_run(const tdgui::GuiConfig *config) noexcept {
  try {
    tdgui::run(*config);
  } catch (...) {
    std::fputs("Tandrel: the menu-bar interface failed.\n", stderr);
  }
}
