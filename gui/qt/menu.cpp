#include "qt/menu.h"

#include "qt/pictures.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <algorithm>

namespace {

using tdgui::Component;
using tdgui::GuiConfig;

/// A text of the launcher's: "&" would mark the next letter.
QString shown_text(const std::string &text) {
  return QString::fromStdString(text).replace('&', "&&");
}

// --- States -------------------------------------------------------------------------------------

/// Without is_running a row shows its component as stopped; the header (all_running) counts it as
/// running.
bool row_is_running(const GuiConfig &config, const Component &component) {
  return config.is_running && config.is_running(component.name);
}

bool all_running(const GuiConfig &config) {
  return std::all_of(config.components.begin(), config.components.end(),
                     [&](const auto &component) {
                       return !config.is_running || config.is_running(component.name);
                     });
}

void update_header(QAction &header, const GuiConfig &config) {
  header.setIconVisibleInMenu(true); // whatever the user prefers for other menus: it is the state
  header.setIcon(td::state_dot(all_running(config) ? td::DotColour::green : td::DotColour::orange));
}

/// The submenu's items are Start, Stop and Restart.
void update_row(QMenu &submenu, const GuiConfig &config, const Component &component) {
  const bool running = row_is_running(config, component);
  submenu.setTitle(shown_text(component.label) + (running ? "   running" : "   stopped"));
  submenu.menuAction()->setIconVisibleInMenu(true);
  submenu.setIcon(td::state_dot(running ? td::DotColour::green : td::DotColour::red));
  const QList<QAction *> items = submenu.actions();
  items[0]->setEnabled(!running);
  items[1]->setEnabled(running);
  items[2]->setEnabled(running);
}

void update_open_at_launch(QAction &item, const GuiConfig &config) {
  item.setChecked(config.open_browser_pref && config.open_browser_pref());
}

/// Calls it now and each time the menu is about to open.
template <typename Update> void keep_updated(QMenu &menu, Update update) {
  update();
  QObject::connect(&menu, &QMenu::aboutToShow, &menu, [&menu, update] {
    if (!menu.isVisible()) { // a panel may ask for it while it is open here
      update();
    }
  });
}

// --- Items --------------------------------------------------------------------------------------

QAction *add_caption(QMenu &menu, const std::string &text) {
  QAction *item = menu.addAction(shown_text(text));
  item->setEnabled(false);
  return item;
}

template <typename Action>
QAction *add_item(QMenu &menu, const char *text, const Action &action, const char *keys = "") {
  QAction *item = menu.addAction(text);
  item->setShortcut(QKeySequence(keys));
  item->setShortcutVisibleInContextMenu(true);
  QObject::connect(item, &QAction::triggered, item, action);
  return item;
}

void add_header(QMenu &menu, const GuiConfig &config) {
  QAction *header = add_caption(menu, config.status);
  QFont font = menu.font();
  font.setBold(true);
  header->setFont(font);
  keep_updated(menu, [header, &config] { update_header(*header, config); });
}

void add_component_row(QMenu &menu, const GuiConfig &config, const Component &component) {
  QMenu *submenu = menu.addMenu(QString());
  const auto add = [&](const char *text, auto callback) {
    add_item(*submenu, text, [&component, callback] {
      if (callback) {
        callback(component.name);
      }
    });
  };
  add("Start", config.start);
  add("Stop", config.stop);
  add("Restart", config.restart);
  keep_updated(menu, [submenu, &config, &component] { update_row(*submenu, config, component); });
}

void start_all(const GuiConfig &config) {
  for (const Component &component : config.components) {
    if (config.start) {
      config.start(component.name);
    }
  }
}

void stop_all(const GuiConfig &config) {
  for (auto component = config.components.rbegin(); component != config.components.rend();
       ++component) {
    if (config.stop) {
      config.stop(component->name);
    }
  }
}

void add_all_components(QMenu &menu, const GuiConfig &config) {
  QMenu *submenu = menu.addMenu("All Components");
  add_item(*submenu, "Start All", [&config] { start_all(config); });
  add_item(*submenu, "Stop All", [&config] { stop_all(config); });
  add_item(*submenu, "Restart All", [&config] {
    stop_all(config);
    start_all(config);
  });
}

void add_open_at_launch(QMenu &menu, const GuiConfig &config) {
  QAction *item = add_item(menu, "Open Dashboard at Launch", [&config] {
    if (config.open_browser_pref && config.set_open_browser_pref) {
      config.set_open_browser_pref(!config.open_browser_pref());
    }
  });
  item->setCheckable(true);
  // Qt changes the check mark at once; the next opening shows the new value.
  QObject::connect(item, &QAction::triggered, item, [item](bool on) { item->setChecked(!on); });
  keep_updated(menu, [item, &config] { update_open_at_launch(*item, config); });
}

// --- Shortcuts ----------------------------------------------------------------------------------

/// Qt looks for shortcuts in the window that has the focus, and an open menu is none.
class ShortcutKeys : public QObject {
public:
  /// Watches the menu, which owns this, and its submenus.
  explicit ShortcutKeys(QMenu &menu) : QObject(&menu), menu_(menu) {
    menu.installEventFilter(this);
    for (QMenu *submenu : menu.findChildren<QMenu *>()) {
      submenu->installEventFilter(this);
    }
  }

  bool eventFilter(QObject *watched, QEvent *event) override {
    return event->type() == QEvent::KeyPress ? choose(*static_cast<QKeyEvent *>(event))
                                             : QObject::eventFilter(watched, event);
  }

private:
  bool choose(const QKeyEvent &press) {
    const QKeySequence keys(press.keyCombination());
    for (QAction *item : menu_.actions()) {
      if (!keys.isEmpty() && item->shortcut() == keys) {
        menu_.close();
        item->trigger();
        return true;
      }
    }
    return false;
  }

  QMenu &menu_;
};

} // namespace

namespace td {

void fill_menu(QMenu &menu, const GuiConfig &config, const Commands &commands) {
  menu.setSeparatorsCollapsible(false); // two together put more space around what they separate
  add_header(menu, config);
  add_caption(menu, config.url);
  menu.addSeparator();
  add_item(menu, "Open Dashboard", commands.open_dashboard, "Ctrl+O");
  const QString address = QString::fromStdString(config.url);
  add_item(
      menu, "Copy Dashboard Address", [address] { QApplication::clipboard()->setText(address); },
      "Ctrl+C");
  menu.addSeparator();
  for (const Component &component : config.components) {
    add_component_row(menu, config, component);
  }
  menu.addSeparator();
  add_all_components(menu, config);
  menu.addSeparator();
  menu.addSeparator();
  add_item(menu, "Settings…", commands.open_settings, "Ctrl+,");
  add_open_at_launch(menu, config);
  menu.addSeparator();
  menu.addSeparator();
  add_item(menu, "Quit Tandrel", commands.quit, "Ctrl+Q");
  new ShortcutKeys(menu);
}

} // namespace td
