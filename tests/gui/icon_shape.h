/// The icon's picture: five bars in points, 18 wide and 16 high, with the origin at the bottom
/// left.
#pragma once

#include <algorithm>
#include <cmath>

namespace gui_test {

constexpr int icon_width = 18, icon_height = 16;

/// The point's distance from the outline of the nearest bar; negative inside it.
inline double distance_from_bars(double x, double y) {
  constexpr double half_width = 1, corner_radius = 1, middle = 8;
  constexpr struct {
    double centre, half_height;
  } bars[] = {{1, 2.5}, {5, 5}, {9, 7}, {13, 5}, {17, 2.5}};
  double nearest = icon_width;
  for (const auto &bar : bars) {
    const double right = std::fabs(x - bar.centre) - (half_width - corner_radius),
                 up = std::fabs(y - middle) - (bar.half_height - corner_radius);
    const double distance = std::hypot(std::max(right, 0.0), std::max(up, 0.0)) +
                            std::min(std::max(right, up), 0.0) - corner_radius;
    nearest = std::min(nearest, distance);
  }
  return nearest;
}

} // namespace gui_test
