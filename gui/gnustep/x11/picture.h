/// Pictures as the X server takes them.
#pragma once

#include <cstdint>
#include <vector>

#include <xcb/xcb.h>

namespace td {

/// Rows from the top, each of `width` pixels: 0xAARRGGBB, the colours multiplied with alpha.
struct Picture {
  int width = 0;
  int height = 0;
  std::vector<std::uint32_t> pixels;

  std::uint32_t &at(int x, int y) { return pixels[static_cast<std::size_t>(y) * width + x]; }
  std::uint32_t at(int x, int y) const { return pixels[static_cast<std::size_t>(y) * width + x]; }
};

/// A picture of one colour.
Picture filled_picture(int width, int height, std::uint32_t colour);

/// Draws `picture` onto the middle of `canvas`; what does not fit is cut off.
void draw_centred(Picture &canvas, const Picture &picture);

/// A square with smooth round corners, opaque of one colour, see-through outside.
Picture rounded_square(int side, std::uint32_t colour, double radius);

/// How many pixels a rounded corner cuts off at each end of row `row` of `height`.
int corner_cut(int row, int height, double radius);

/// The picture as the data of a PutImage request for windows of a true-colour visual.
std::vector<std::uint8_t> image_data(const Picture &picture, const xcb_setup_t &setup,
                                     const xcb_visualtype_t &visual, std::uint8_t depth);

} // namespace td
