// The two functions that the launcher calls in tdgui.so.

#include "process/process_guards.h"
#include "tdgui.h"

#include <cstdio>

#include <X11/Xlib.h>

#define TDGUI_EXPORT extern "C" __attribute__((visibility("default")))

/// Whether the interface can be shown: an X display can be opened. Any thread, may be repeated.
TDGUI_EXPORT bool tdgui_available() noexcept {
  Display *display = XOpenDisplay(nullptr);
  if (!display) {
    return false;
  }
  XCloseDisplay(display);
  return true;
}

/// tdgui::run for a launcher that loads this module at run time. Throws nothing, because the
/// launcher has its own C++ runtime: returns early when the interface fails.
TDGUI_EXPORT void tdgui_run(const tdgui::GuiConfig *config) noexcept {
  try {
    td::prepare_process();
    tdgui::run(*config);
  } catch (...) { // also GNUstep's exceptions
    std::fputs("The menu-bar interface failed.\n", stderr);
  }
}
