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

namespace {

/// By the desktop's command, not as a child of this process and with no descriptor of it.
void open_address(const std::string &address) {
  close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC); // at the execution of any program
  const char *script =
      R"(exec </dev/null >/dev/null 2>&1; unset DBUS_FATAL_WARNINGS
         command -v open && exec open "$1"; exec xdg-open "$1")";
  QProcess::startDetached("/bin/sh", {"-c", script, "sh", QString::fromStdString(address)});
}

} // namespace

namespace tdgui {

void run(const GuiConfig &config) {
  GuiConfig copy = config;
  copy.quit = config.quit ? config.quit : config.quit_fallback;
  td::quit_at_exit(copy.quit);
  td::make_application();
  bool quits = false;
  {
    const auto open_dashboard = [&copy] { open_address(copy.url); };
    const auto quit = [&copy, &quits] {
      if (copy.quit) {
        copy.quit();
      }
      quits = true;
      QCoreApplication::exit();
    };
    QMenu menu;
    td::fill_menu(menu, copy, open_dashboard, quit);
    const td::StatusIcon icon(menu, open_dashboard);
    const auto register_again = [&copy] { td::quit_at_exit(copy.quit); };
    QMetaObject::invokeMethod(qApp, register_again, Qt::QueuedConnection);
    QApplication::exec();
    td::close_dialog();
  }
  td::quit_at_exit(nullptr); // also when the display goes now
  if (quits) {
    if (!QGuiApplication::platformName().startsWith("wayland")) { // else its thread may hang
      delete qApp; // hands what was copied over to the desktop's clipboard manager
    }
    std::exit(EXIT_SUCCESS);
  }
}

} // namespace tdgui

/// Whether the interface can be shown; false where no display is named. Otherwise it is
/// td::make_application(true), for a process made to ask, which ends by _exit(). Main thread only.
extern "C" bool tdgui_available() noexcept {
  if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
      qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    return false;
  }
  td::make_application(true);
  return true;
}

/// tdgui::run for a launcher that loads this module, once tdgui_available has returned true in any
/// process. Throws nothing, as the launcher has its own C++ runtime: returns early on failure.
extern "C" void tdgui_run(const tdgui::GuiConfig *config) noexcept {
  try {
    tdgui::run(*config);
  } catch (...) {
    std::fputs("Tandrel: the menu-bar interface failed.\n", stderr);
  }
}
