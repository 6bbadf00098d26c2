#include "qt/menu.h"

#include "qt/dialogs.h"
#include "qt/pictures.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <algorithm>

namespace {

using tdgui::Component;
using tdgui::GuiConfig;

/// A text from the launcher: "&" would mark the next letter.
QString shown_text(const std::string &text) {
  return QString::fromStdString(text).replace('&', "&&");
}

/// Calls `update` now and each time the menu is about to open.
template <typename Update> void keep_updated(QMenu &menu, Update update) {
  update();
  QObject::connect(&menu, &QMenu::aboutToShow, &menu, [&menu, update] {
    if (!menu.isVisible()) { // a panel may ask for it while it is open here
      update();
    }
  });
}

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

/// Shows the dot even where menus hide icons.
void set_dot(QAction &item, QColor colour) {
  item.setIconVisibleInMenu(true);
  item.setIcon(td::state_dot(colour));
}

/// If `is_running` is null, it counts all components as running.
void add_header(QMenu &menu, const GuiConfig &config) {
  QAction *header = add_caption(menu, config.status);
  QFont font = menu.font();
  font.setBold(true);
  header->setFont(font);
  keep_updated(menu, [header, &config] {
    const auto is_running = [&](const Component &component) {
      return !config.is_running || config.is_running(component.name);
    };
    set_dot(*header, std::all_of(config.components.begin(), config.components.end(), is_running)
                         ? td::green
                         : td::orange);
  });
}

/// If `is_running` is null, it shows the component as stopped.
void add_component_row(QMenu &menu, const GuiConfig &config, const Component &component) {
  QMenu *submenu = menu.addMenu(QString());
  const auto add = [&](const char *text, auto callback) {
    return add_item(*submenu, text, [&component, callback] {
      if (callback) {
        callback(component.name);
      }
    });
  };
  QAction *start = add("Start", config.start), *stop = add("Stop", config.stop),
          *restart = add("Restart", config.restart);
  keep_updated(menu, [=, &config, &component] {
    const bool running = config.is_running && config.is_running(component.name);
    submenu->setTitle(shown_text(component.label) + (running ? "   running" : "   stopped"));
    set_dot(*submenu->menuAction(), running ? td::green : td::red);
    start->setEnabled(!running);
    stop->setEnabled(running);
    restart->setEnabled(running);
  });
}

void add_all_components(QMenu &menu, const GuiConfig &config) {
  const auto start_all = [&config] {
    for (const Component &component : config.components) {
      if (config.start) {
        config.start(component.name);
      }
    }
  };
  const auto stop_all = [&config] {
    for (std::size_t place = config.components.size(); config.stop && place > 0; --place) {
      config.stop(config.components[place - 1].name);
    }
  };
  QMenu *submenu = menu.addMenu("All Components");
  add_item(*submenu, "Start All", start_all);
  add_item(*submenu, "Stop All", stop_all);
  add_item(*submenu, "Restart All", [start_all, stop_all] {
    stop_all();
    start_all();
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
  keep_updated(menu, [item, &config] {
    item->setChecked(config.open_browser_pref && config.open_browser_pref());
  });
}

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

  bool eventFilter(QObject * /*watched*/, QEvent *event) override {
    if (event->type() != QEvent::KeyPress) {
      return false;
    }
    const QKeySequence keys(static_cast<QKeyEvent *>(event)->keyCombination());
    for (QAction *item : menu_.actions()) {
      if (!keys.isEmpty() && item->shortcut() == keys) {
        menu_.close();
        item->trigger();
        return true;
      }
    }
    return false;
  }

private:
  QMenu &menu_;
};

} // namespace

namespace td {

void fill_menu(QMenu &menu, const GuiConfig &config, const std::function<void()> &open_dashboard,
               const std::function<void()> &quit) {
  menu.setSeparatorsCollapsible(false); // two together put more space around what they separate
  add_header(menu, config);
  add_caption(menu, config.url);
  menu.addSeparator();
  add_item(menu, "Open Dashboard", open_dashboard, "Ctrl+O");
  const auto copy = [&config] { qApp->clipboard()->setText(QString::fromStdString(config.url)); };
  add_item(menu, "Copy Dashboard Address", copy, "Ctrl+C");
  menu.addSeparator();
  for (const Component &component : config.components) {
    add_component_row(menu, config, component);
  }
  menu.addSeparator();
  add_all_components(menu, config);
  menu.addSeparator();
  menu.addSeparator();
  const auto settings = [&config] { open_settings(config); };
  add_item(menu, "Settings…", settings, "Ctrl+,");
  add_open_at_launch(menu, config);
  menu.addSeparator();
  menu.addSeparator();
  add_item(menu, "Quit Tandrel", quit, "Ctrl+Q");
  new ShortcutKeys(menu);
  // After a choice too: not every panel tells that it opens the menu.
  QObject::connect(&menu, &QMenu::triggered, &menu, &QMenu::aboutToShow, Qt::QueuedConnection);
}

} // namespace td
