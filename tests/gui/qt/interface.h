/// Runs the interface with Qt in the test process, with callbacks that record their calls.
#pragma once

#include "record.h"

#include <QDialog>
#include <QLineEdit>
#include <QMenu>
#include <functional>
#include <string>

namespace gui_test {

/// The objects of a running interface.
struct Interface {
  QMenu *menu = nullptr;
  QWidget *icon = nullptr; ///< the floating one: the tests have no panel
};

/// The window of the floating icon, also while it is hidden; null before it is made.
QWidget *floating_icon();

/// Calls tdgui::run with `config` and, once the icon can be seen, runs `body` in its event loop,
/// which then ends.
void run_interface(const tdgui::GuiConfig &config, const std::function<void(Interface)> &body);

/// Opens the menu by a click on the icon.
void open_menu(const Interface &interface);

/// The item of that text in the menu or, with `submenu_of`, in the submenu of the item whose text
/// begins so; fails the test if there is none.
QAction *item_titled(const Interface &interface, const QString &text,
                     const QString &submenu_of = QString());

/// Opens the menu, chooses that item and returns the calls.
Calls calls_of(const Interface &interface, const QString &text,
               const QString &submenu_of = QString());

/// The dialog that is open, or null.
QDialog *dialog();

/// Its fields from top to bottom.
QList<QLineEdit *> fields(const QDialog &dialog);

/// Whether one of its labels shows exactly this text.
bool shows(const QDialog &dialog, const QString &text);

/// Clicks the button of that text; fails the test if there is none.
void click(const QDialog &dialog, const QString &button);

/// Runs the event loop until `done` returns true, for at most ten seconds; returns its last result.
bool run_loop_until(const std::function<bool()> &done);

/// Handles all events that are there.
void handle_events();

/// Writes the text and how often that has been called as a line on standard error: for tests of how
/// the process ends, in which the toolkit's own lines do not matter.
void report(const char *text);

/// From now on the process may end before all tests have run: in a test that is about its end.
void allow_exit();

} // namespace gui_test
