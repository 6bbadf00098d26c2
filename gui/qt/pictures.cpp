#include "qt/pictures.h"

#include <QIconEngine>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace {

using Draw = void (*)(QPainter &painter, QRectF square);

/// Draws each size anew. Unlike an icon of pixmaps it has no paler version for disabled items.
class DrawnIcon : public QIconEngine {
public:
  explicit DrawnIcon(Draw draw) : draw_(draw) {}

  void paint(QPainter *painter, const QRect &rect, QIcon::Mode /*mode*/,
             QIcon::State /*state*/) override {
    const int side = std::min(rect.width(), rect.height());
    QRect square(0, 0, side, side);
    square.moveCenter(rect.center());
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    draw_(*painter, square);
    painter->restore();
  }

  QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override {
    QPixmap pixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    paint(&painter, pixmap.rect(), mode, state);
    return pixmap;
  }

  /// Those that panels ask for: what the bus gets is one picture of each.
  QList<QSize> availableSizes(QIcon::Mode /*mode*/, QIcon::State /*state*/) override {
    QList<QSize> sizes;
    for (const int side : {16, 22, 24, 32, 48, 64}) {
      sizes.append(QSize(side, side));
    }
    return sizes;
  }

  QIconEngine *clone() const override { return new DrawnIcon(draw_); }

private:
  Draw draw_;
};

constexpr QSizeF bars_size(18, 16);

/// By how much the bars are enlarged in a square of `side` pixels. Whole and half scales keep their
/// edges sharp.
double bars_scale(double side) {
  constexpr double filled_part = 0.85, smallest_margin = 1;
  const double scale = std::floor(side * filled_part / bars_size.width() * 2) / 2;
  return scale >= 1 ? scale : std::min(1.0, (side - 2 * smallest_margin) / bars_size.width());
}

void draw_bars(QPainter &painter, QRectF square) {
  static const QRectF bars[] = {
      {0, 5.5, 2, 5}, {4, 3, 2, 10}, {8, 1, 2, 14}, {12, 3, 2, 10}, {16, 5.5, 2, 5}};
  const double scale = bars_scale(square.width());
  painter.translate(square.x() + std::floor((square.width() - bars_size.width() * scale) / 2),
                    square.y() + std::floor((square.height() - bars_size.height() * scale) / 2));
  painter.scale(scale, scale);
  painter.setBrush(QColor::fromRgbF(0.3F, 0.79F, 0.75F));
  for (const QRectF &bar : bars) {
    painter.drawRoundedRect(bar, 1, 1);
  }
}

/// Dark, like the panels of most desktops.
void draw_tile(QPainter &painter, QRectF square) {
  const double radius = square.width() * 0.19;
  painter.setBrush(QColor(33, 33, 33));
  painter.drawRoundedRect(square, radius, radius);
  draw_bars(painter, square);
}

template <int red, int green, int blue> void draw_dot(QPainter &painter, QRectF square) {
  const double margin = square.width() * 0.22;
  painter.setBrush(QColor(red, green, blue));
  painter.drawEllipse(square.adjusted(margin, margin, -margin, -margin));
}

QIcon drawn_icon(Draw draw) {
  return QIcon(new DrawnIcon(draw)); // takes the engine over
}

} // namespace

namespace td {

QIcon bars_icon() {
  return drawn_icon(draw_bars);
}

QIcon tile_icon() {
  return drawn_icon(draw_tile);
}

QIcon state_dot(DotColour colour) {
  switch (colour) {
  case DotColour::green:
    return drawn_icon(draw_dot<40, 205, 65>);
  case DotColour::orange:
    return drawn_icon(draw_dot<255, 149, 0>);
  case DotColour::red:
    break;
  }
  return drawn_icon(draw_dot<255, 59, 48>);
}

} // namespace td
