// The menu-bar interface with Qt: the icon, its menu and the dialogs of one run.

#include "detached.h"
#include "qt/application.h"
#include "qt/dialogs.h"
#include "qt/menu.h"
#include "qt/status_icon.h"
#include "tdgui.h"

#include <QApplication>
#include <cstdlib>

namespace {

/// By the desktop's own command, which does not become a child of this process.
void open_address(const std::string &address) {
  td::run_detached(R"(if command -v open; then open "$@"; else xdg-open "$@"; fi)", {address});
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
  td::quit_at_exit(copy.quit); // before the handlers that the plug-ins have registered
  const bool quits = show_interface(copy);
  td::forget_quit_at_exit();
  if (quits) {
    delete qApp; // hands what was copied over to the desktop's clipboard manager
    std::exit(EXIT_SUCCESS);
  }
}

} // namespace tdgui
