// Every row of the menu, for every combination of component states and of missing callbacks.

#include "interface.h"
#include "menu_table.h"

#include <QTest>

#include <gtest/gtest.h>

using namespace gui_test;

namespace {

std::string name_of(QColor colour) {
  return colour == QColor(40, 205, 65)   ? "green"
         : colour == QColor(255, 149, 0) ? "orange"
         : colour == QColor(255, 59, 48) ? "red"
                                         : "another colour";
}

/// The colour of the icon's middle, the same in every state of the item.
std::string dot_of(const QIcon &icon) {
  if (icon.isNull()) {
    return "";
  }
  const QImage picture = icon.pixmap(QSize(16, 16), 1.0, QIcon::Normal).toImage();
  for (const QIcon::Mode mode : {QIcon::Disabled, QIcon::Active, QIcon::Selected}) {
    EXPECT_EQ(icon.pixmap(QSize(16, 16), 1.0, mode).toImage(), picture) << mode;
  }
  EXPECT_EQ(picture.pixelColor(0, 0).alpha(), 0);
  return name_of(picture.pixelColor(8, 8));
}

/// "o" for Ctrl+O.
std::string key_of(const QKeySequence &keys) {
  const QString text = keys.toString();
  EXPECT_TRUE(text.isEmpty() || text.startsWith("Ctrl+"));
  return text.mid(5).toLower().toStdString();
}

std::vector<Item> items_of(const QMenu *menu) {
  std::vector<Item> items;
  for (const QAction *found : menu ? menu->actions() : QList<QAction *>()) {
    Item item;
    if (found->isSeparator()) {
      item.text = separator_text;
    } else {
      item.text = QString(found->text()).replace("&&", "&").toStdString();
      item.dot = dot_of(found->isIconVisibleInMenu() ? found->icon() : QIcon());
      item.key = key_of(found->shortcut());
      item.enabled = found->isEnabled();
      item.checked = found->isChecked();
      item.submenu = items_of(found->menu());
    }
    items.push_back(item);
  }
  return items;
}

/// Opens the menu and expects that it shows and does what the table has for this config.
void expect_menu(const Interface &interface, const tdgui::GuiConfig &config) {
  open_menu(interface);
  const std::vector<Item> expected = expected_menu(config);
  EXPECT_EQ(lines(items_of(interface.menu)), lines(expected));
  interface.menu->hide();
  expect_calls(expected, [&](std::vector<std::size_t> place) {
    QAction *item = interface.menu->actions().at(place[0]);
    (place.size() == 1 ? item : item->menu()->actions().at(place[1]))->trigger();
  });
}

} // namespace

TEST(Menu, ShowsEveryCombinationOfStates) {
  const tdgui::GuiConfig config = recorded_config();
  run_interface(config, [&](const Interface &interface) {
    for (unsigned combination = 0; combination < 8; ++combination) {
      SCOPED_TRACE(combination);
      set_states(combination);
      expect_menu(interface, config);
    }
  });
}

TEST(Menu, ShowsEveryCombinationOfMissingCallbacks) {
  for (unsigned dropped = 0; dropped < 128; ++dropped) {
    SCOPED_TRACE(dropped);
    tdgui::GuiConfig config = recorded_config();
    drop_callbacks(config, dropped);
    record().open_browser = true;
    set_states(3);
    run_interface(config, [&](const Interface &interface) { expect_menu(interface, config); });
  }
}

TEST(Menu, ShowsItsDotsWhereMenusHaveNoIcons) {
  QCoreApplication::setAttribute(Qt::AA_DontShowIconsInMenus);
  const tdgui::GuiConfig config = recorded_config();
  run_interface(config, [&](const Interface &interface) { expect_menu(interface, config); });
  QCoreApplication::setAttribute(Qt::AA_DontShowIconsInMenus, false);
}

TEST(Menu, HeaderAsksInOrderUpToTheFirstStoppedComponentAndThenEveryRowAsks) {
  tdgui::GuiConfig config = recorded_config();
  config.is_running = note_question;
  run_interface(config, [](const Interface &interface) {
    for (unsigned combination = 0; combination < 8; ++combination) {
      set_states(combination);
      record().calls.clear();
      open_menu(interface);
      EXPECT_EQ(record().calls, expected_questions()) << combination;
    }
  });
}

TEST(Menu, ShowsAChangeOnlyAtItsNextOpening) {
  const tdgui::GuiConfig config = recorded_config();
  run_interface(config, [&](const Interface &interface) {
    open_menu(interface);
    const std::vector<std::string> before = lines(items_of(interface.menu));
    set_states(5);
    record().open_browser = true;
    record().is_running_calls = 0;
    QTest::keyClick(interface.menu, Qt::Key_Down);
    Q_EMIT interface.menu->aboutToShow(); // as a panel asks for it meanwhile
    handle_events();
    EXPECT_EQ(record().is_running_calls, 0);
    EXPECT_EQ(lines(items_of(interface.menu)), before);
    expect_menu(interface, config);
  });
}

/// A panel may choose an item that it has been told of long ago.
TEST(Menu, KeepsItsItems) {
  run_interface(recorded_config(), [](const Interface &interface) {
    open_menu(interface);
    const QList<QAction *> before = interface.menu->actions();
    interface.menu->hide();
    set_states(0);
    open_menu(interface);
    EXPECT_EQ(interface.menu->actions(), before);
  });
}

TEST(Menu, WithoutComponentsKeepsItsSeparatorsAndIsGreen) {
  tdgui::GuiConfig config = recorded_config();
  config.components.clear();
  run_interface(config, [&](const Interface &interface) { expect_menu(interface, config); });
}

TEST(Menu, ShowsTextsAsTheyAre) {
  tdgui::GuiConfig config = recorded_config();
  config.url = "http://localhost:8080/?a=b&c=d";
  config.status = "Tändrel & Söhne <b>♫</b>";
  config.components = {{"hub", "Höb & Co"}};
  run_interface(config, [&](const Interface &interface) {
    expect_menu(interface, config);
    EXPECT_EQ(interface.menu->actions().at(0)->text(), "Tändrel && Söhne <b>♫</b>");
  });
  config.url = config.status = "";
  run_interface(config, [&](const Interface &interface) { expect_menu(interface, config); });
}

TEST(Menu, HasABoldHeaderAndNothingElseBold) {
  run_interface(recorded_config(), [](const Interface &interface) {
    for (const QAction *item : interface.menu->actions()) {
      EXPECT_EQ(item->font().bold(), item == interface.menu->actions().at(0));
    }
  });
}

TEST(Menu, ShowsItsShortcutsAndBothOfTwoSeparators) {
  run_interface(recorded_config(), [](const Interface &interface) {
    open_menu(interface);
    for (const QAction *item : interface.menu->actions()) {
      EXPECT_TRUE(item->shortcut().isEmpty() || item->isShortcutVisibleInContextMenu());
      EXPECT_FALSE(interface.menu->actionGeometry(const_cast<QAction *>(item)).isEmpty());
    }
    EXPECT_FALSE(interface.menu->separatorsCollapsible());
  });
}
