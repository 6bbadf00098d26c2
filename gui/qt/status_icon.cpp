#include "qt/status_icon.h"

#include "qt/dialogs.h"
#include "qt/pictures.h"

#include <QApplication>
#include <QBitmap>
#include <QCloseEvent>
#include <QCursor>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <algorithm>
#include <utility>

namespace {

constexpr int side = 32, margin = 8, embedding_time = 3000; // pixels, ms

bool may_place_windows() {
  return !QGuiApplication::platformName().startsWith("wayland");
}

/// Qt's window for the icon in X's tray; 0 where there is none.
xcb_window_t window_in_tray() {
  for (const QWidget *window : QApplication::topLevelWidgets()) {
    if (window->inherits("QSystemTrayIconSys")) {
      return static_cast<xcb_window_t>(window->internalWinId());
    }
  }
  return XCB_NONE;
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
    : menu_(menu), open_dashboard_(std::move(open_dashboard)),
      desktop_([this] { follow_panels(); },
               [this] { // the window manager does not know this window
                 if (QApplication::activePopupWidget() == nullptr) {
                   raise();
                 }
               }) {
  if (may_place_windows()) {
    setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                   Qt::WindowDoesNotAcceptFocus | Qt::X11BypassWindowManagerHint);
  }
  embedding_.setSingleShot(true);
  embedding_.callOnTimeout([this] { follow_panels(); });
  setAttribute(Qt::WA_ShowWithoutActivating);
  setAttribute(Qt::WA_AlwaysShowToolTips);    // it is never the active window
  setAttribute(Qt::WA_TranslucentBackground); // round corners, where the desktop composes windows
  setFixedSize(side, side);
  setMask(tile_icon().pixmap(size(), 1.0).mask()); // and elsewhere
  setWindowTitle("Tandrel");
  setToolTip("Tandrel");
  QObject::connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, &StatusIcon::place);
  place();
  QObject::connect(this, &QAbstractButton::clicked, this, [this] { open_menu(geometry()); });
}

void StatusIcon::follow_panels() {
  if (!panel_icon_ && (desktop_.has_host() || (kind_ == Kind::undecided && desktop_.has_tray()))) {
    make_panel_icon();
  }
  bool in_panel = kind_ == Kind::bus && desktop_.has_host() && panel_icon_;
  if (kind_ == Kind::tray) {
    in_panel = desktop_.has_tray();
    if (panel_icon_->isVisible() != in_panel) { // kept: Qt 6.8 may put a new one on the bus
      embedding_.start(embedding_time);
      panel_icon_->setVisible(in_panel);
    }
    in_panel = in_panel && (embedding_.isActive() || desktop_.is_embedded(window_in_tray()));
  } else if (panel_icon_ && !in_panel) {
    // LXQt shows neither the same icon again nor the menus that it has exported.
    panel_icon_.reset();
    menu_.setPlatformMenu(nullptr);
    for (QMenu *submenu : menu_.findChildren<QMenu *>()) {
      submenu->setPlatformMenu(nullptr);
    }
  }
  setVisible(!in_panel);
}

/// Makes none where Qt finds no panel: it may just have gone. To Qt 6.8 the service that icons
/// register at is one.
void StatusIcon::make_panel_icon() {
  if (desktop_.is_bus_silent() || !QSystemTrayIcon::isSystemTrayAvailable()) {
    return;
  }
  panel_icon_ = std::make_unique<QSystemTrayIcon>(bars_icon());
  panel_icon_->setToolTip("Tandrel");
  panel_icon_->setContextMenu(&menu_);
  QObject::connect(panel_icon_.get(), &QSystemTrayIcon::activated, this,
                   &StatusIcon::tray_icon_clicked);
  panel_icon_->show();
  embedding_.start(embedding_time);
  const Kind without_tray = desktop_.has_host() ? Kind::bus : kind_;
  kind_ = window_in_tray() != XCB_NONE ? Kind::tray : without_tray;
}

void StatusIcon::tray_icon_clicked(QSystemTrayIcon::ActivationReason reason) {
  if (reason != QSystemTrayIcon::Trigger) {
    return; // Qt itself opens the menu at a right click
  }
  const QRect icon = panel_icon_->geometry(); // empty on the bus, which does not say
  // In the panel of a Wayland session, X does not know where the pointer is.
  const bool knows_pointer = may_place_windows() && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
  if (icon.isValid() || knows_pointer) {
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

/// All of it on the screen, also where the work area is smaller than the icon or none.
void StatusIcon::place() {
  if (const QScreen *screen = QGuiApplication::primaryScreen()) { // none when all are unplugged
    QObject::connect(screen, &QScreen::availableGeometryChanged, this, &StatusIcon::place,
                     Qt::UniqueConnection);
    const QRect usable = screen->availableGeometry();
    const QRect area = usable.isEmpty() ? screen->geometry() : usable;
    move(std::max(area.left(), area.right() + 1 - side - margin), area.top() + margin);
  }
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
