/// The icon's picture: five bars, the same upside down. packaging/icon/drawing.py has them too.
#pragma once

namespace tdgui {

/// Each one's x, y, width and height, in units of which the picture is 18 wide and 16 high.
constexpr double bars[][4] = {
    {0, 5.5, 2, 5}, {4, 3, 2, 10}, {8, 1, 2, 14}, {12, 3, 2, 10}, {16, 5.5, 2, 5},
};
constexpr double bars_width = 18, bars_height = 16, bar_radius = 1;

/// Parts of their colour, 0 to 1, in sRGB.
constexpr double bars_red = 0.3, bars_green = 0.79, bars_blue = 0.75;

} // namespace tdgui
