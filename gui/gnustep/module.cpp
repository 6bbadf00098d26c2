// What the launcher finds in tdgui.so.

#include "process/process_guards.h"
#include "tdgui.h"

#include <cstdio>

#include <X11/Xlib.h>

#define TDGUI_EXPORT extern "C" __attribute__((visibility("default")))

/// Whether the interface can be shown: a display opens. Any thread, any number of times.
TDGUI_EXPORT bool tdgui_available() noexcept {
  Display *display = XOpenDisplay(nullptr);
  if (!display) {
    return false;
  }
  XCloseDisplay(display);
  return true;
}

/// tdgui::run for a launcher that loads this module when it runs. No exception leaves it: the
/// launcher has a C++ runtime of its own. Returns early when the interface fails.
TDGUI_EXPORT void tdgui_run(const tdgui::GuiConfig *config) noexcept {
  try {
    td::prepare_process();
    tdgui::run(*config);
  } catch (...) { // GNUstep's exceptions, too
    std::fputs("The menu-bar interface failed.\n", stderr);
  }
}
