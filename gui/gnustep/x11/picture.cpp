#include "x11/picture.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int channel_shifts[] = {24, 16, 8, 0};

std::uint32_t over(std::uint32_t paper, std::uint32_t ink) {
  const std::uint32_t visible = 255 - (ink >> 24);
  std::uint32_t mixed = 0;
  for (const int shift : channel_shifts) {
    const std::uint32_t sum =
        ((ink >> shift) & 255) + (((paper >> shift) & 255) * visible + 127) / 255;
    mixed |= std::min<std::uint32_t>(sum, 255) << shift;
  }
  return mixed;
}

int lowest_bit(std::uint32_t mask) {
  int bit = 0;
  while (mask && !(mask >> bit & 1)) {
    ++bit;
  }
  return bit;
}

/// 0 to 255 as the bits of a mask.
std::uint32_t channel(std::uint32_t value, std::uint32_t mask) {
  const std::uint64_t highest = mask >> lowest_bit(mask);
  return static_cast<std::uint32_t>((value * highest + 127) / 255) << lowest_bit(mask);
}

std::uint32_t pixel_value(std::uint32_t colour, const xcb_visualtype_t &visual,
                          std::uint8_t depth) {
  const std::uint32_t colours = channel(colour >> 16 & 255, visual.red_mask) |
                                channel(colour >> 8 & 255, visual.green_mask) |
                                channel(colour & 255, visual.blue_mask);
  const std::uint32_t alpha_mask =
      depth == 32 ? ~(visual.red_mask | visual.green_mask | visual.blue_mask) : 0;
  return colours | channel(colour >> 24, alpha_mask);
}

std::uint32_t faded(std::uint32_t colour, double part) {
  std::uint32_t result = 0;
  for (const int shift : channel_shifts) {
    result |= static_cast<std::uint32_t>(std::lround(((colour >> shift) & 255) * part)) << shift;
  }
  return result;
}

const xcb_format_t &format_of(const xcb_setup_t &setup, std::uint8_t depth) {
  auto formats = xcb_setup_pixmap_formats_iterator(&setup);
  while (formats.rem > 1 && formats.data->depth != depth) {
    xcb_format_next(&formats);
  }
  return *formats.data;
}

} // namespace

namespace td {

Picture filled_picture(int width, int height, std::uint32_t colour) {
  return {width, height,
          std::vector<std::uint32_t>(static_cast<std::size_t>(width) * height, colour)};
}

void draw_centred(Picture &canvas, const Picture &picture) {
  const int left = (canvas.width - picture.width) / 2, top = (canvas.height - picture.height) / 2;
  for (int y = std::max(0, top); y < std::min(canvas.height, top + picture.height); ++y) {
    for (int x = std::max(0, left); x < std::min(canvas.width, left + picture.width); ++x) {
      canvas.at(x, y) = over(canvas.at(x, y), picture.at(x - left, y - top));
    }
  }
}

// A colour is an integer too. NOLINTNEXTLINE(bugprone-easily-swappable-parameters)
Picture rounded_square(int side, std::uint32_t colour, double radius) {
  Picture picture = filled_picture(side, side, 0);
  const double straight = side / 2.0 - radius; // from the middle
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      const double across = std::max(0.0, std::abs(x + 0.5 - side / 2.0) - straight),
                   up = std::max(0.0, std::abs(y + 0.5 - side / 2.0) - straight);
      const double covered = std::clamp(radius + 0.5 - std::hypot(across, up), 0.0, 1.0);
      picture.at(x, y) = faded(colour, covered);
    }
  }
  return picture;
}

// Both count rows. NOLINTNEXTLINE(bugprone-easily-swappable-parameters)
int corner_cut(int row, int height, double radius) {
  const double from_edge = std::min(row, height - 1 - row) + 0.5;
  if (from_edge >= radius) {
    return 0;
  }
  const double up = radius - from_edge;
  return static_cast<int>(std::lround(radius - std::sqrt(radius * radius - up * up)));
}

std::vector<std::uint8_t> image_data(const Picture &picture, const xcb_setup_t &setup,
                                     const xcb_visualtype_t &visual, std::uint8_t depth) {
  const xcb_format_t &format = format_of(setup, depth);
  const std::size_t size = format.bits_per_pixel / 8, padding = format.scanline_pad / 8;
  const std::size_t row_size = (picture.width * size + padding - 1) / padding * padding;
  const bool lowest_first = setup.image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST;
  std::vector<std::uint8_t> data(row_size * picture.height);
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) {
      const std::uint32_t value = pixel_value(picture.at(x, y), visual, depth);
      for (std::size_t byte = 0; byte < size; ++byte) {
        const std::size_t place = lowest_first ? byte : size - 1 - byte;
        data[y * row_size + x * size + place] = value >> 8 * byte & 255;
      }
    }
  }
  return data;
}

} // namespace td
