#include "qt/floating_icon.h"

#include "qt/pictures.h"

#include <QBitmap>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QResizeEvent>
#include <QScreen>
#include <utility>

namespace {

constexpr int side = 32, margin = 8;

} // namespace

namespace td {

FloatingIcon::FloatingIcon(std::function<void(QRect place)> pressed)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                           Qt::WindowDoesNotAcceptFocus | Qt::X11BypassWindowManagerHint),
      pressed_(std::move(pressed)) {
  setAttribute(Qt::WA_ShowWithoutActivating);
  setAttribute(Qt::WA_TranslucentBackground); // round corners, where the desktop composes windows
  setWindowTitle("Tandrel");
  setAccessibleName("Tandrel");
  setToolTip("Tandrel");
  setFixedSize(side, side);
  QObject::connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, [this] {
    watch_screen();
    place();
  });
  watch_screen();
}

void FloatingIcon::watch_screen() {
  QObject::disconnect(work_area_);
  if (const QScreen *screen = QGuiApplication::primaryScreen()) {
    work_area_ =
        QObject::connect(screen, &QScreen::availableGeometryChanged, this, [this] { place(); });
  }
}

void FloatingIcon::place() {
  if (const QScreen *screen = QGuiApplication::primaryScreen()) {
    const QRect area = screen->availableGeometry();
    move(area.right() + 1 - side - margin, area.top() + margin);
  }
}

void FloatingIcon::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  tile_icon().paint(&painter, rect());
}

void FloatingIcon::mousePressEvent(QMouseEvent *event) {
  if (event->button() == Qt::LeftButton || event->button() == Qt::RightButton) {
    pressed_(geometry());
  }
}

/// Round corners where the desktop does not compose windows.
void FloatingIcon::resizeEvent(QResizeEvent *event) {
  setMask(tile_icon().pixmap(event->size(), 1.0).mask());
}

void FloatingIcon::showEvent(QShowEvent * /*event*/) {
  place();
}

} // namespace td
