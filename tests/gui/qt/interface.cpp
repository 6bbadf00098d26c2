#include "interface.h"

#include "qt/application.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <cstdio>

#include <gtest/gtest.h>

namespace gui_test {
namespace {

/// The interface's window of that class, except for those that its other windows own.
template <typename Window> Window *top_window(const std::function<bool(const Window &)> &wanted) {
  for (QWidget *widget : QApplication::topLevelWidgets()) {
    auto *window = dynamic_cast<Window *>(widget);
    if (window && !window->parent() && wanted(*window)) {
      return window;
    }
  }
  return nullptr;
}

Interface running_interface() {
  QWidget *icon = floating_icon();
  return {top_window<QMenu>([](const QMenu &) { return true; }),
          icon && icon->isVisible() ? icon : nullptr};
}

QAction *item_in(const QMenu *menu, const std::function<bool(const QString &)> &wanted) {
  for (QAction *item : menu->actions()) {
    if (wanted(item->text())) {
      return item;
    }
  }
  return nullptr;
}

} // namespace

QWidget *floating_icon() {
  return top_window<QWidget>([](const QWidget &widget) {
    return widget.windowTitle() == "Tandrel" && !widget.inherits("QDialog");
  });
}

void run_interface(const tdgui::GuiConfig &config, const std::function<void(Interface)> &body) {
  td::make_application();
  QTimer::singleShot(0, [&] {
    EXPECT_TRUE(run_loop_until([] { return running_interface().icon != nullptr; }));
    body(running_interface());
    QCoreApplication::exit();
  });
  tdgui::run(config);
  handle_events();
}

void open_menu(const Interface &interface) {
  interface.menu->hide();
  QTest::mouseClick(interface.icon, Qt::LeftButton);
  EXPECT_TRUE(interface.menu->isVisible());
}

QAction *item_titled(const Interface &interface, const QString &text, const QString &submenu_of) {
  const QMenu *menu = interface.menu;
  if (!submenu_of.isEmpty()) {
    const QAction *row =
        item_in(menu, [&](const QString &found) { return found.startsWith(submenu_of); });
    menu = row ? row->menu() : nullptr;
  }
  QAction *item =
      menu ? item_in(menu, [&](const QString &found) { return found == text; }) : nullptr;
  EXPECT_NE(item, nullptr) << text.toStdString();
  return item;
}

Calls calls_of(const Interface &interface, const QString &text, const QString &submenu_of) {
  open_menu(interface);
  interface.menu->hide();
  record().calls.clear();
  if (QAction *item = item_titled(interface, text, submenu_of)) {
    item->trigger();
  }
  return record().calls;
}

QDialog *dialog() {
  return top_window<QDialog>([](const QDialog &found) { return found.isVisible(); });
}

QList<QLineEdit *> fields(const QDialog &dialog) {
  return dialog.findChildren<QLineEdit *>();
}

bool shows(const QDialog &dialog, const QString &text) {
  const QList<QLabel *> labels = dialog.findChildren<QLabel *>();
  return std::any_of(labels.begin(), labels.end(),
                     [&](const QLabel *label) { return label->text() == text; });
}

void click(const QDialog &dialog, const QString &button) {
  for (QPushButton *found : dialog.findChildren<QPushButton *>()) {
    if (found->text() == button) {
      return QTest::mouseClick(found, Qt::LeftButton);
    }
  }
  ADD_FAILURE() << "no button " << button.toStdString();
}

void report(const char *text) {
  static int count = 0;
  std::fprintf(stderr, "%d %s\n", ++count, text);
}

bool run_loop_until(const std::function<bool()> &done) {
  return QTest::qWaitFor(done, 10000);
}

void handle_events() {
  QCoreApplication::processEvents();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace gui_test
