// The two functions that the launcher calls in tdgui.so.

#include "process/display_guard.h"
#include "process/process_guards.h"
#include "tdgui.h"

#include <cstdio>
#include <exception>

#define TDGUI_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

void report_unavailable(const char *reason) {
  std::fprintf(stderr, "Tandrel: the menu-bar interface is not available: %s.\n", reason);
}

} // namespace

/// Whether the interface can be shown. Finds out by making the application. Call once, on the main
/// thread. When it returns false, tdgui_run must not be called; the process's signal actions and
/// mask are as before, and nothing has been started. It then says why on standard error, in one
/// line, unless there is just no display. If the display goes away meanwhile, ends the process by
/// exit(0).
TDGUI_EXPORT bool tdgui_available() noexcept {
  try {
    if (!td::display_answers()) {
      return false;
    }
    td::quit_when_display_is_lost(nullptr); // exit() is enough here: the launcher has a handler
    td::make_application();
    return true;
  } catch (const std::exception &error) {
    report_unavailable(error.what());
  } catch (...) { // GNUstep's exceptions
    report_unavailable("GNUstep cannot make the application");
  }
  return false;
}

/// tdgui::run for a launcher that loads this module at run time; call it once tdgui_available has
/// returned true, on the same thread. Throws nothing, because the launcher has its own C++ runtime:
/// returns early when the interface fails.
TDGUI_EXPORT void tdgui_run(const tdgui::GuiConfig *config) noexcept {
  try {
    td::quit_when_display_is_lost(config->quit ? config->quit : config->quit_fallback);
    tdgui::run(*config);
  } catch (...) { // also GNUstep's exceptions
    std::fputs("Tandrel: the menu-bar interface failed.\n", stderr);
  }
}
