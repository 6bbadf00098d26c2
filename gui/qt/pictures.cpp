#include "qt/pictures.h"

#include "bars.h"

#include <QIconEngine>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

namespace {

using Draw = std::function<void(QPainter &painter, double side)>;

/// Draws each size anew. Unlike an icon of pixmaps it has no paler version for disabled items.
class DrawnIcon : public QIconEngine {
public:
  explicit DrawnIcon(Draw draw) : draw_(std::move(draw)) {}

  void paint(QPainter *painter, const QRect &rect, QIcon::Mode /*mode*/,
             QIcon::State /*state*/) override {
    const int side = std::min(rect.width(), rect.height());
    QRect square(0, 0, side, side);
    square.moveCenter(rect.center());
    painter->save();
    painter->translate(square.topLeft());
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    draw_(*painter, side);
    painter->restore();
  }

  QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override {
    QPixmap pixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    paint(&painter, pixmap.rect(), mode, state);
    return pixmap;
  }

  /// The sizes that panels ask for: one picture of each goes over the bus.
  QList<QSize> availableSizes(QIcon::Mode /*mode*/, QIcon::State /*state*/) override {
    return {{16, 16}, {22, 22}, {24, 24}, {32, 32}, {48, 48}, {64, 64}};
  }

  QIconEngine *clone() const override { return new DrawnIcon(draw_); }

private:
  Draw draw_;
};

/// The scale of the bars in a square of `side` pixels. Whole and half ones keep edges sharp.
double bars_scale(double side) {
  constexpr double filled_part = 0.85, smallest_margin = 1;
  const double scale = std::floor(side * filled_part / tdgui::bars_width * 2) / 2;
  return scale >= 1 ? scale : std::min(1.0, (side - 2 * smallest_margin) / tdgui::bars_width);
}

void draw_bars(QPainter &painter, double side) {
  const double scale = bars_scale(side);
  painter.translate(std::floor((side - tdgui::bars_width * scale) / 2),
                    std::floor((side - tdgui::bars_height * scale) / 2));
  painter.scale(scale, scale);
  painter.setBrush(QColor::fromRgbF(tdgui::bars_red, tdgui::bars_green, tdgui::bars_blue));
  for (const auto &[x, y, width, height] : tdgui::bars) {
    painter.drawRoundedRect(QRectF(x, y, width, height), tdgui::bar_radius, tdgui::bar_radius);
  }
}

/// Dark, like the panels of most desktops.
void draw_tile(QPainter &painter, double side) {
  painter.setBrush(QColor(33, 33, 33));
  painter.drawRoundedRect(QRectF(0, 0, side, side), side * 0.19, side * 0.19);
  draw_bars(painter, side);
}

} // namespace

namespace td {

QIcon bars_icon() {
  return QIcon(new DrawnIcon(draw_bars)); // takes the engine over
}

QIcon tile_icon() {
  return QIcon(new DrawnIcon(draw_tile));
}

QIcon state_dot(QColor colour) {
  return QIcon(new DrawnIcon([colour](QPainter &painter, double side) {
    painter.setBrush(colour);
    painter.drawEllipse(QPointF(side / 2, side / 2), side * 0.28, side * 0.28);
  }));
}

} // namespace td
