#include "qt/status_icon.h"

#include "qt/dialogs.h"
#include "qt/pictures.h"

#include <QApplication>
#include <QBitmap>
#include <QCloseEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <utility>

namespace {

constexpr int side = 32, margin = 8;

bool may_place_windows() {
  return !QGuiApplication::platformName().startsWith("wayland");
}

Qt::WindowFlags window_kind() {
  return may_place_windows() ? Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                                   Qt::WindowDoesNotAcceptFocus | Qt::X11BypassWindowManagerHint
                             : Qt::Window;
}

/// Below the icon or, in the lower half of the monitor, above it. Qt keeps it on the monitor.
QPoint menu_place(QRect icon, QSize menu) {
  const QScreen *screen = QGuiApplication::screenAt(icon.center());
  const bool above = screen != nullptr && icon.center().y() > screen->geometry().center().y();
  return above ? icon.topLeft() - QPoint(0, menu.height()) : icon.bottomLeft() + QPoint(0, 1);
}

} // namespace

namespace td {

StatusIcon::StatusIcon(QMenu &menu, std::function<void()> open_dashboard)
    : QWidget(nullptr, window_kind()), menu_(menu), open_dashboard_(std::move(open_dashboard)),
      desktop_([this](bool available) { show_in(available); },
               [this] { // the window manager does not know this window
                 if (QApplication::activePopupWidget() == nullptr) {
                   raise();
                 }
               }) {
  setAttribute(Qt::WA_ShowWithoutActivating);
  setAttribute(Qt::WA_AlwaysShowToolTips);    // it is never the active window
  setAttribute(Qt::WA_TranslucentBackground); // round corners, where the desktop composes windows
  setFixedSize(side, side);
  setMask(tile_icon().pixmap(size(), 1.0).mask()); // and elsewhere
  setWindowTitle("Tandrel");
  setToolTip("Tandrel");
  QObject::connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this,
                   &StatusIcon::watch_screen);
  watch_screen(QGuiApplication::primaryScreen());
}

void StatusIcon::show_in(bool panel) {
  if (panel && !in_tray_) {
    in_tray_ = std::make_unique<QSystemTrayIcon>(bars_icon());
    in_tray_->setToolTip("Tandrel");
    in_tray_->setContextMenu(&menu_);
    QObject::connect(in_tray_.get(), &QSystemTrayIcon::activated, this,
                     &StatusIcon::tray_icon_clicked);
  } else if (!panel && desktop_.has_chosen_bus()) {
    in_tray_.reset(); // LXQt does not show the same one again, nor the menus that it has exported
    menu_.setPlatformMenu(nullptr);
    for (QMenu *submenu : menu_.findChildren<QMenu *>()) {
      submenu->setPlatformMenu(nullptr);
    }
  }
  if (in_tray_) { // kept for X's tray: Qt 6.8 may put a new one on the bus
    in_tray_->setVisible(panel);
  }
  setVisible(!panel);
}

void StatusIcon::tray_icon_clicked(QSystemTrayIcon::ActivationReason reason) {
  if (reason != QSystemTrayIcon::Trigger) {
    return; // Qt itself opens the menu at a right click
  }
  const QRect icon = in_tray_->geometry(); // on the bus nobody tells
  if (may_place_windows()) {
    open_menu(icon.isValid() ? icon : QRect(QCursor::pos(), QSize(1, 1)));
  } else if (!raise_dialog()) {
    open_dashboard_();
  }
}

void StatusIcon::open_menu(QRect icon) {
  if (!raise_dialog()) {
    menu_.popup(menu_place(icon, menu_.sizeHint()));
  }
}

void StatusIcon::watch_screen(QScreen *screen) {
  QObject::disconnect(work_area_);
  if (screen != nullptr) {
    work_area_ = QObject::connect(screen, &QScreen::availableGeometryChanged, this,
                                  [this, screen] { place(*screen); });
    place(*screen);
  }
}

/// All of it on the screen, also where the work area is smaller than the icon or none.
void StatusIcon::place(const QScreen &screen) {
  const QRect usable = screen.availableGeometry();
  const QRect area = usable.isEmpty() ? screen.geometry() : usable;
  move(std::max(area.left(), area.right() + 1 - side - margin), area.top() + margin);
}

void StatusIcon::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  tile_icon().paint(&painter, rect());
}

void StatusIcon::mousePressEvent(QMouseEvent *event) {
  if (event->button() == Qt::LeftButton || event->button() == Qt::RightButton) {
    open_menu(geometry());
  }
}

/// An ordinary window stays within reach.
void StatusIcon::closeEvent(QCloseEvent *event) {
  event->ignore();
  showMinimized();
}

} // namespace td
