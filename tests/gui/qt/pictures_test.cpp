// The icon's picture, pixel by pixel.

#include "icon_shape.h"
#include "qt/application.h"
#include "qt/pictures.h"

#include <QPainter>
#include <map>

#include <gtest/gtest.h>

using namespace gui_test;

namespace {

/// Pixels for each point of the picture at an icon's size in pixels.
const std::map<int, double> scales = {{16, 14.0 / 18}, {22, 1}, {24, 1},   {32, 1.5}, {44, 2},
                                      {48, 2},         {64, 3}, {96, 4.5}, {128, 6}};

/// Which part of the pixel the bars cover, 0 to 1. `scale`: pixels for each point.
double covered_part(int column, int row, int side, double scale) {
  constexpr int samples = 8;
  const double left = std::floor((side - icon_width * scale) / 2),
               top = std::floor((side - icon_height * scale) / 2);
  int inside = 0;
  for (int i = 0; i < samples * samples; ++i) {
    const double x = (column + (i % samples + 0.5) / samples - left) / scale,
                 y = icon_height - (row + (i / samples + 0.5) / samples - top) / scale;
    inside += distance_from_bars(x, y) < 0;
  }
  return static_cast<double>(inside) / (samples * samples);
}

bool is_teal(QColor colour) {
  return std::abs(colour.red() - 77) <= 3 && std::abs(colour.green() - 201) <= 3 &&
         std::abs(colour.blue() - 191) <= 3;
}

/// Expects the bars in their colour and nothing else on a transparent ground.
void expect_bars(const QImage &picture, int side) {
  ASSERT_EQ(picture.size(), QSize(side, side));
  int wrong = 0, ink = 0;
  for (int row = 0; row < side; ++row) {
    for (int column = 0; column < side; ++column) {
      const QColor colour = picture.pixelColor(column, row);
      const double part = covered_part(column, row, side, scales.at(side));
      wrong +=
          std::abs(colour.alphaF() - part) > 0.15 || (colour.alpha() > 128 && !is_teal(colour));
      ink += colour.alpha() > 128;
    }
  }
  EXPECT_EQ(wrong, 0);
  EXPECT_GT(ink, side * side / 10);
}

} // namespace

class Icon : public testing::TestWithParam<int> {
protected:
  void SetUp() override { td::make_application(); }
};

TEST_P(Icon, HasFiveTealBarsAtEveryScale) {
  const QSize size(GetParam(), GetParam());
  for (const int scale : {1, 2}) {
    for (const QIcon::Mode mode : {QIcon::Normal, QIcon::Disabled, QIcon::Selected}) {
      SCOPED_TRACE(scale);
      const QPixmap pixmap = td::bars_icon().pixmap(size, scale, mode);
      EXPECT_EQ(pixmap.devicePixelRatio(), scale);
      expect_bars(pixmap.toImage(), GetParam() * scale);
    }
  }
}

TEST_P(Icon, OnATileHasTheSameBars) {
  const int side = GetParam();
  const QImage tile = td::tile_icon().pixmap(QSize(side, side), 1.0).toImage();
  EXPECT_LT(tile.pixelColor(0, 0).alpha(), 32);
  EXPECT_EQ(tile.pixelColor(side / 2, 0).rgb(), QColor(33, 33, 33).rgb());
  int teal = 0, expected = 0;
  for (int row = 0; row < side; ++row) {
    for (int column = 0; column < side; ++column) {
      teal += is_teal(tile.pixelColor(column, row));
      expected += covered_part(column, row, side, scales.at(side)) == 1;
    }
  }
  EXPECT_GE(teal, expected);
  EXPECT_LE(teal, side * side / 4);
}

INSTANTIATE_TEST_SUITE_P(Sizes, Icon, testing::Values(16, 22, 24, 32, 48, 64));

TEST(IconSizes, AreThoseOfPanels) {
  td::make_application();
  for (const QSize size : {QSize(16, 16), QSize(22, 22), QSize(24, 24), QSize(64, 64)}) {
    EXPECT_TRUE(td::bars_icon().availableSizes().contains(size)) << size.width();
  }
}

TEST(IconSizes, ArePaintedInTheMiddleOfAnyRectangle) {
  td::make_application();
  QImage canvas(100, 32, QImage::Format_ARGB32_Premultiplied);
  canvas.fill(Qt::transparent);
  QPainter painter(&canvas);
  td::bars_icon().paint(&painter, canvas.rect());
  painter.end();
  expect_bars(canvas.copy(34, 0, 32, 32), 32);
}
