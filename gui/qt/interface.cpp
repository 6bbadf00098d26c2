// One run of the interface with Qt, and the two functions of the module.

#include "qt/application.h"
#include "qt/dialogs.h"
#include "qt/menu.h"
#include "qt/status_icon.h"
#include "tdgui.h"

#include <QApplication>
#include <QProcess>
#include <cstdio>
#include <cstdlib>

#include <linux/close_range.h>
#include <unistd.h>

#define TDGUI_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

/// By the desktop's own command, which does not become a child of this process and inherits no
/// descriptor but the null device.
void open_address(const std::string &address) {
  close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC); // at the execution of any program
  const char *script =
      R"(exec </dev/null >/dev/null 2>&1; command -v open && exec open "$1"; exec xdg-open "$1")";
  QProcess::startDetached("/bin/sh", {"-c", script, "sh", QString::fromStdString(address)});
}

/// Shows the interface until the event loop is stopped; true when Quit has done that.
bool show_interface(const tdgui::GuiConfig &config) {
  bool quits = false;
  const auto open_dashboard = [&config] { open_address(config.url); };
  const auto quit = [&config, &quits] {
    if (config.quit) {
      config.quit();
    }
    quits = true;
    QCoreApplication::exit();
  };
  QMenu menu;
  td::fill_menu(menu, config, {open_dashboard, [&config] { td::open_settings(config); }, quit});
  const td::StatusIcon icon(menu, open_dashboard);
  QMetaObject::invokeMethod(
      qApp, [&config] { td::quit_at_exit(config.quit); }, Qt::QueuedConnection);
  QApplication::exec();
  td::close_dialog();
  return quits;
}

} // namespace

namespace tdgui {

void run(const GuiConfig &config) {
  GuiConfig copy = config;
  if (!copy.quit) {
    copy.quit = copy.quit_fallback;
  }
  td::quit_at_exit(copy.quit);
  td::make_application();
  const bool quits = show_interface(copy);
  td::forget_quit_at_exit();
  if (quits) {
    td::delete_application();
    std::exit(EXIT_SUCCESS);
  }
}

} // namespace tdgui

/// Whether the interface can be shown. Finds out by making the application, and where the display
/// does not work, says why in one line on standard error and ends the process by _exit(): so call
/// it in a process made for that, which loads this module, asks, and ends by _exit(). Returns false
/// silently where there is just no display. It may wait for the display as long as that takes. Main
/// thread only.
TDGUI_EXPORT bool tdgui_available() noexcept {
  if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
      qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    return false;
  }
  td::make_application(true);
  return true;
}

/// tdgui::run for a launcher that loads this module, once tdgui_available has returned true in any
/// process. Throws nothing, as the launcher has its own C++ runtime: returns early on failure.
TDGUI_EXPORT void tdgui_run(const tdgui::GuiConfig *config) noexcept {
  try {
    tdgui::run(*config);
  } catch (...) {
    std::fputs("Tandrel: the menu-bar interface failed.\n", stderr);
  }
}
