#include "qt/status_icon.h"

#include "qt/dialogs.h"
#include "qt/pictures.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <utility>

namespace {

/// Beside the icon, below it or, in the lower half of the monitor, above. Qt keeps the menu on the
/// monitor.
QPoint menu_place(QRect icon, QSize menu) {
  const QScreen *screen = QGuiApplication::screenAt(icon.center());
  const bool above = screen != nullptr && icon.center().y() > screen->geometry().center().y();
  return above ? icon.topLeft() - QPoint(0, menu.height()) : icon.bottomLeft() + QPoint(0, 1);
}

bool may_place_windows() {
  return !QGuiApplication::platformName().startsWith("wayland");
}

} // namespace

namespace td {

StatusIcon::StatusIcon(QMenu &menu, std::function<void()> open_dashboard)
    : menu_(menu), open_dashboard_(std::move(open_dashboard)),
      floating_([this](QRect icon) { open_menu(icon); }),
      panel_([this](bool available) { show_in(available); }) {}

void StatusIcon::show_in(bool panel) {
  if (panel && !in_tray_) {
    make_tray_icon();
  }
  if (in_tray_) {
    in_tray_->setVisible(panel);
  }
  floating_.setVisible(!panel);
}

void StatusIcon::make_tray_icon() {
  in_tray_ = std::make_unique<QSystemTrayIcon>(bars_icon());
  in_tray_->setToolTip("Tandrel");
  in_tray_->setContextMenu(&menu_);
  QObject::connect(in_tray_.get(), &QSystemTrayIcon::activated, in_tray_.get(),
                   [this](auto reason) { tray_icon_clicked(reason); });
}

void StatusIcon::tray_icon_clicked(QSystemTrayIcon::ActivationReason reason) {
  if (reason != QSystemTrayIcon::Trigger) {
    return; // Qt itself opens the menu at a right click
  }
  if (!may_place_windows()) {
    if (!raise_dialog()) {
      open_dashboard_();
    }
    return;
  }
  const QRect icon = in_tray_->geometry(); // on the bus nobody tells
  open_menu(icon.isValid() ? icon : QRect(QCursor::pos(), QSize(1, 1)));
}

void StatusIcon::open_menu(QRect icon) {
  if (!raise_dialog()) {
    menu_.popup(menu_place(icon, menu_.sizeHint()));
  }
}

} // namespace td
